#pragma once

#include "infrastructure/QueltInString.h"

#include <cstddef>
#include <string_view>

namespace quelt {
struct NameEntry;
}

/// A name that equal names of the process share: comparing two is comparing two addresses. The text lives as
/// long as any object bears the name, on the plain heap; a name that lies in an arena bears it until the
/// arena is reset. Safe to use from many threads.
class QUELT_CORE_API QueltInName {
public:
    /// The empty name.
    QueltInName() noexcept = default;
    /// The shared name with this text.
    explicit QueltInName(std::string_view text);
    /// The same name.
    QueltInName(const QueltInName& other) { share(other.m_pEntry); }
    /// Bears the other name from then on.
    QueltInName& operator=(const QueltInName& other);
    ~QueltInName() { giveUp(); }

    /// The text; valid as long as any object bears the name.
    [[nodiscard]] const QueltInString& text() const noexcept;

    /// How many different names the process bears now, the empty one not counted; for figures and tests.
    [[nodiscard]] static std::size_t countOfNames();

    /// True when the texts are equal; constant time.
    friend bool operator==(const QueltInName& left, const QueltInName& right) noexcept {
        return left.m_pEntry == right.m_pEntry;
    }

private:
    void share(quelt::NameEntry* entry);
    void giveUp() noexcept;

    quelt::NameEntry* m_pEntry = nullptr; // null: the empty name
    bool m_counted = false;
};
