#pragma once

#include <cstdint>

namespace quelt {

/// The 32-bit code as a signed number: negative where bit 31 is set, on every platform, however wide `long`
/// is.
constexpr long resultCode(std::uint32_t code) noexcept {
    return static_cast<long>(static_cast<std::int32_t>(code));
}

} // namespace quelt

// Result codes. Negative is failure; callers test for a negative value only. The platform headers of Windows
// define the same numbers under the same names, as macros; where they were read before, theirs stand.
#ifndef S_OK
/// Success.
inline constexpr long S_OK = 0;
#endif
#ifndef E_FAIL
/// A check failed.
inline constexpr long E_FAIL = quelt::resultCode(0x80004005U);
#endif
#ifndef E_NOTIMPL
/// The case is deliberately not handled.
inline constexpr long E_NOTIMPL = quelt::resultCode(0x80004001U);
#endif
#ifndef E_UNEXPECTED
/// A restriction leaf stands where none may stand.
inline constexpr long E_UNEXPECTED = quelt::resultCode(0x8000FFFFU);
#endif
#ifndef E_POINTER
/// A null argument.
inline constexpr long E_POINTER = quelt::resultCode(0x80004003U);
#endif
#ifndef E_INVALIDARG
/// A wrong type, a position out of range, text that does not parse.
inline constexpr long E_INVALIDARG = quelt::resultCode(0x80070057U);
#endif
#ifndef E_OUTOFMEMORY
/// The result would pass a limit.
inline constexpr long E_OUTOFMEMORY = quelt::resultCode(0x8007000EU);
#endif
/// Something is there already; the first stays.
inline constexpr long E_ALREADYTHERE = quelt::resultCode(0x800700B7U);
