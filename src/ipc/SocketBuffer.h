#pragma once

namespace Orlix {

/** @param uiAsked bytes; 0 for the usual number.
 *  @return the bytes of a socket thread's receive buffer. */
constexpr unsigned int getReceiveBufferSize(unsigned int uiAsked) { return uiAsked != 0 ? uiAsked : 1048576; }
} // namespace Orlix
