#pragma once

#include <Orlix/system/CLog.h>

namespace Orlix {

// The names under which the engine and its tools log.
inline constexpr wchar_t LOG_SOURCE_ENGINE[] = L"OrlixEngine";
inline constexpr wchar_t LOG_SOURCE_STUDIO[] = L"OrlixStudio";
inline constexpr wchar_t LOG_SOURCE_BUILD[] = L"OrlixBuild";

extern ORLIX_API const CString ORLIX_ENGINE;
extern ORLIX_API const CString ORLIX_STUDIO;
extern ORLIX_API const CString ORLIX_BUILD;

/** The log under one source name; each operation does what the one of CLog does. */
template <const wchar_t* pSource> class CLogFront {
public:
    static void info(const wchar_t* pText) { CLog::info(pSource, pText); }
    static void info(const CString& strText) { CLog::info(pSource, strText.getBuffer()); }
    static void warning2(const wchar_t* pText) { CLog::warning2(pSource, pText); }
    static void warning2(const CString& strText) { CLog::warning2(pSource, strText.getBuffer()); }
    static void error2(const wchar_t* pText) { CLog::error2(pSource, pText); }
    static void error2(const CString& strText) { CLog::error2(pSource, strText.getBuffer()); }
    static void debug2(const wchar_t* pText) { CLog::debug2(pSource, pText); }
    static void debug2(const CString& strText) { CLog::debug2(pSource, strText.getBuffer()); }
};

/** The log as the engine writes it, this library included. */
class ORLIX_API CLogEngine : public CLogFront<LOG_SOURCE_ENGINE> {};
/** The log as the studio writes it. */
class ORLIX_API CLogStudio : public CLogFront<LOG_SOURCE_STUDIO> {};
/** The log as the build tools write it. */
class ORLIX_API CLogBuild : public CLogFront<LOG_SOURCE_BUILD> {};
} // namespace Orlix
