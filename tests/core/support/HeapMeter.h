#pragma once

#include <cstddef>

/// True where bytes are counted: a sanitizer has operators of its own, and on Windows each library.
bool heapIsMetered() noexcept;

/// All bytes that operator new has been asked for in this process so far, given back since or not.
std::size_t heapBytesAskedFor() noexcept;
