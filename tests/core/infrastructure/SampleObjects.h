#pragma once

#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInObjectVal.h"
#include "infrastructure/QueltInString.h"

#include <gtest/gtest.h>

#include <ostream>

/// An object without a value; counts how many of it live.
class Part : public QueltInTyped<Part, QueltInObject> {
public:
    static constexpr const char* s_className = "Part";
    explicit Part(int number = 0) : m_number(number) { ++s_alive; }
    ~Part() override { --s_alive; }
    Part(const Part&) = delete;
    Part& operator=(const Part&) = delete;
    QueltInString toString() const override;

    static inline int s_alive = 0;
    int m_number;
};
extern template class QueltInTyped<Part, QueltInObject>;

/// A part of a special kind.
class SparePart : public QueltInTyped<SparePart, Part> {
public:
    static constexpr const char* s_className = "SparePart";
    using QueltInTyped::QueltInTyped;
};
extern template class QueltInTyped<SparePart, Part>;

/// A value of which only three hashes exist, so that tables have to deal with equal ones.
class Crowded : public QueltInTyped<Crowded, QueltInObjectVal> {
public:
    static constexpr const char* s_className = "Crowded";
    explicit Crowded(int number) : m_number(number) { ++s_alive; }
    Crowded(const Crowded& other) : QueltInTyped(other), m_number(other.m_number) { ++s_alive; }
    Crowded& operator=(const Crowded&) = default;
    ~Crowded() override { --s_alive; }
    QueltInObjectVal* clone(QueltInObjectVal* reuse) const override;
    int equals(const QueltInObjectVal& other) const override;
    unsigned int hash() const override;

    static inline int s_alive = 0;
    int m_number;
};
extern template class QueltInTyped<Crowded, QueltInObjectVal>;

inline std::ostream& operator<<(std::ostream& stream, const QueltInString& text) {
    return stream << '"' << text.view() << '"';
}

/// The text of an object, for comparisons.
inline std::string textOf(const QueltInObject& object) {
    return std::string(object.toString().view());
}
