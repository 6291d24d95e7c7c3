#pragma once

#include <cstdint>

namespace quelt::host::test {

/// Whether allocations can be made to fail here: on Windows each library has operators of its own.
[[nodiscard]] bool allocationsCanFail() noexcept;

/// The pieces of memory that operator new has given out in this process and that live.
[[nodiscard]] long livePieces() noexcept;

/// While it lives, an allocation of the thread that made it fails.
class AllocationFailure {
public:
    /// Which allocations fail: one, or that one and all behind it.
    enum class Lasting { once, forGood };

    /// Lets the allocation with this number fail, counted from 1.
    AllocationFailure(std::uint64_t number, Lasting lasting) noexcept;
    ~AllocationFailure();
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;

    /// Ends the failures; answers whether there was any.
    bool end() noexcept;
};

} // namespace quelt::host::test
