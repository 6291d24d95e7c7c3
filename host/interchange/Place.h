#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace quelt::host {

/// Says that an interchange text cannot be used: what is wrong and where, in one sentence without full stop.
class Refusal : public std::runtime_error {
public:
    /// For this reason, which may quote any text, zero characters included.
    explicit Refusal(const std::string& reason) : std::runtime_error(reason), m_reason(reason) {}
    /// The whole reason; what() ends at the first zero character of it.
    [[nodiscard]] const std::string& reason() const noexcept { return m_reason; }

private:
    std::string m_reason;
};

/// Where a value stands in a JSON document, as a chain of places on the stack of whoever reads it: a place
/// must not outlive the one that it was made from. The text of the way there is built only when something is
/// wrong.
class Place {
public:
    /// The whole document.
    Place() noexcept = default;
    /// The value of `key` in the object at this place; the text of `key` must outlive the place.
    [[nodiscard]] Place child(std::string_view key) const noexcept { return {this, key, s_noIndex}; }
    /// The item at `index` in the array at this place.
    [[nodiscard]] Place item(std::size_t index) const noexcept { return {this, {}, index}; }

    /// The way from the root as a JSON pointer (RFC 6901); empty for the root.
    [[nodiscard]] std::string pointer() const;
    /// Throws a Refusal that says `what` and where: "... at /list/0", "... at the root".
    [[noreturn]] void refuse(std::string_view what) const;

private:
    static constexpr std::size_t s_noIndex = static_cast<std::size_t>(-1);
    Place(const Place* above, std::string_view key, std::size_t index) noexcept
        : m_pAbove(above), m_key(key), m_index(index) {}

    const Place* m_pAbove = nullptr;
    std::string_view m_key;
    std::size_t m_index = s_noIndex;
};

/// Appends "/" and `token` with the escapes of RFC 6901.
void appendPointerToken(std::string& pointer, std::string_view token);

/// `name` in single quotes, for messages; a long one is cut.
[[nodiscard]] std::string inQuotes(std::string_view name);

} // namespace quelt::host
