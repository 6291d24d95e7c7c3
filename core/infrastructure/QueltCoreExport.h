#pragma once

/// Marks what QueltCore offers to the programs that link it; everything else of the library stays hidden.
/// A macro, because the attribute differs by platform and by the side of the boundary that reads it.
#if defined(_WIN32)
#if defined(QueltCore_EXPORTS)
#define QUELT_CORE_API __declspec(dllexport)
#else
#define QUELT_CORE_API __declspec(dllimport)
#endif
#else
#define QUELT_CORE_API __attribute__((visibility("default")))
#endif
