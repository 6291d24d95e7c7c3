#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <numeric>
#include <type_traits>
#include <vector>

namespace quelt::test {

/// The slot of a virtual operation in the table of its class, the destructor being slot 0; -1 for one that is
/// not virtual. Reads the address of a member function as the C++ ABI of Linux and MinGW on x86-64 lays it
/// out: one more than the operation's distance from the start of the table. The destructor, which is declared
/// first, has two entries there.
template <class Class, class Signature>
int slotOf(Signature Class::*operation) {
    static_assert(std::is_member_function_pointer_v<decltype(operation)>);
    std::array<std::ptrdiff_t, 2> parts{};
    static_assert(sizeof operation == sizeof parts);
    std::memcpy(parts.data(), &operation, sizeof parts);
    constexpr auto entrySize = static_cast<std::ptrdiff_t>(sizeof(void*));
    return parts[0] % 2 != 0 ? static_cast<int>((parts[0] - 1) / entrySize) - 1 : -1;
}

/// A class with one virtual operation more than `Class`.
template <class Class>
class WithOneMore : public Class {
public:
    virtual void oneMore() = 0;
};

/// How many slots the table of `Class` has, the destructor's among them.
template <class Class>
int slotCount() {
    return slotOf(&WithOneMore<Class>::oneMore);
}

/// The slots from `first` on, as many as `slots` has: what the slots of operations are that stand in that
/// order.
inline std::vector<int> inARow(int first, const std::vector<int>& slots) {
    std::vector<int> row(slots.size());
    std::iota(row.begin(), row.end(), first);
    return row;
}

} // namespace quelt::test
