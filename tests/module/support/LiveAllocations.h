#pragma once

/// The number of pieces of heap memory that operator new has given out in this process and that live. Always
/// 0 under a sanitizer, which has operators and a leak check of its own, and on Windows, where every library
/// has operators of its own.
long liveAllocations() noexcept;
