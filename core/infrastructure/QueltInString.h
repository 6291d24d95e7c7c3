#pragma once

#include "infrastructure/QueltInMemory.h"
#include "infrastructure/QueltInObjectVal.h"

#include <string>
#include <string_view>

class QueltInString;
extern template class QUELT_CORE_API QueltInTyped<QueltInString, QueltInObjectVal>;

/// A text as a value object: UTF-8 by convention, any bytes in fact.
class QUELT_CORE_API QueltInString : public QueltInTyped<QueltInString, QueltInObjectVal> {
public:
    static constexpr const char* s_className = "QueltInString";
    /// A text whose memory comes from the allocator that is current on the thread.
    using Text = std::basic_string<char, std::char_traits<char>, QueltInAllocator<char>>;

    /// The empty text.
    QueltInString() = default;
    /// A copy of `text`.
    QueltInString(std::string_view text) : m_text(text) {} // NOLINT(google-explicit-constructor)
    /// A copy of `text`.
    QueltInString(const std::string& text) : m_text(text) {} // NOLINT(google-explicit-constructor)
    /// A copy of the zero-terminated `text`; null gives the empty text.
    QueltInString(const char* text) // NOLINT(google-explicit-constructor)
        : m_text(text != nullptr ? text : "") {}
    /// Takes `text` over.
    explicit QueltInString(Text&& text) noexcept : m_text(std::move(text)) {}

    /// The zero-terminated text, valid as long as this object lives and does not change.
    [[nodiscard]] const char* ConvertToChar() const noexcept { return m_text.c_str(); }
    /// The text with its length; valid as ConvertToChar's is.
    [[nodiscard]] std::string_view view() const noexcept { return m_text; }
    /// Reads a signed 32-bit decimal number as scanf does with the format "%d": leading white space and
    /// whatever follows the number are accepted. E_INVALIDARG, and `number` as it was, when there is no
    /// number, when it does not fit, or when `format` is another one; E_POINTER for a null format.
    [[nodiscard]] long ConvertToNum(int& number, const char* format) const;
    /// Appends `text`.
    QueltInString& append(std::string_view text);

    [[nodiscard]] QueltInString toString() const override { return *this; }
    [[nodiscard]] QueltInObjectVal* clone(QueltInObjectVal* reuse) const override;
    [[nodiscard]] int equals(const QueltInObjectVal& other) const override;
    [[nodiscard]] unsigned int hash() const override;

    /// True when both texts have the same bytes.
    friend bool operator==(const QueltInString& left, const QueltInString& right) noexcept {
        return left.m_text == right.m_text;
    }

private:
    Text m_text;
};
