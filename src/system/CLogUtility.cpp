#include <Orlix/system/CLogUtility.h>

#include "foundation/StaticOrder.h"

namespace Orlix {

ORLIX_STATIC_LOG_UTILITY const CString ORLIX_ENGINE(LOG_SOURCE_ENGINE);
ORLIX_STATIC_LOG_UTILITY const CString ORLIX_STUDIO(LOG_SOURCE_STUDIO);
ORLIX_STATIC_LOG_UTILITY const CString ORLIX_BUILD(LOG_SOURCE_BUILD);
} // namespace Orlix
