#pragma once

#include "dictionary/QueltEeVariable.h"

#include <string_view>

class QueltEeVarEff;
extern template class QUELT_CORE_API QueltInTyped<QueltEeVarEff, QueltInObject>;

/// A variable effectivity: the set of values of one variable for which something applies, and whether it
/// applies in a configuration in which the variable has no value ("no variable"). Two flags carry this:
/// `negated` turns everything round, "no variable" included; the no-variable flag says whether "no variable"
/// is in before that.
///
/// Set operations work in place and are exact. They answer E_INVALIDARG, and change nothing, when the other
/// effectivity is of another class or on another variable, and E_OUTOFMEMORY when the result would pass
/// 1,000,000 intervals or values. Two variables with the same GUID count as one when their values agree,
/// whatever dictionaries hold them (see agreesWith() of the variables); no variable counts as one with no
/// variable. An operation stores its result in normal form: not negated, sorted, each value once.
class QUELT_CORE_API QueltEeVarEff : public QueltInTyped<QueltEeVarEff, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltEeVarEff";

    /// A copy; the caller owns it. Never null for the classes of the core.
    [[nodiscard]] virtual QueltEeVarEff* createVarEffClone() const = 0;
    /// The variable, or null (dates have none).
    [[nodiscard]] virtual const QueltEeDicoObject* getVar() const = 0;
    /// Non-zero when `other` denotes the same: the same class, variable, values and "no variable", however
    /// written.
    [[nodiscard]] virtual unsigned char equals(const QueltEeVarEff& other) const = 0;
    /// Keeps what is in `other` as well (intersection). S_OK; E_INVALIDARG and E_OUTOFMEMORY as said of the
    /// class, and nothing is changed then.
    virtual long opAnd(const QueltEeVarEff& other) = 0;
    /// Adds what is in `other` (union); results as of opAnd.
    virtual long opOr(const QueltEeVarEff& other) = 0;
    /// Takes out what is in `other` (difference); results as of opAnd.
    virtual long opCut(const QueltEeVarEff& other) = 0;
    /// Complement of everything, "no variable" included. S_OK always.
    virtual long opNot();
    /// Complement within the variable's values; whether "no variable" is in stays. S_OK always.
    virtual long opNotDom();
    /// The negated flag as stored.
    [[nodiscard]] virtual unsigned char isNegated() const;
    /// Non-zero when "no variable" is in: the no-variable flag, turned round when negated.
    [[nodiscard]] virtual unsigned char isNoVarIncluded() const;
    /// The no-variable flag as stored.
    [[nodiscard]] virtual unsigned char getNoVar() const;
    /// Non-zero when nothing is in, "no variable" neither.
    [[nodiscard]] virtual unsigned char isAllFalse() const = 0;
    /// Non-zero when everything is in, "no variable" included.
    [[nodiscard]] virtual unsigned char isAllTrue() const = 0;
    /// Turns the no-variable flag round.
    virtual void switchNoVar();

    /// "Engine in {V6, V8}", in "not (...)" when negated, followed by "?" when "no variable" is in.
    [[nodiscard]] QueltInString toString() const override = 0;

protected:
    /// Not negated, without "no variable".
    QueltEeVarEff() = default;
    /// With the same flags.
    QueltEeVarEff(const QueltEeVarEff&) = default;
    /// Takes both flags over.
    QueltEeVarEff& operator=(const QueltEeVarEff&) = default;

    /// The text for toString(): `values`, such as "Engine in {V6, V8}", with what the flags say.
    [[nodiscard]] QueltInString describe(std::string_view values) const;
    /// Sets both flags, for the set operations.
    void setFlags(bool negated, bool noVar) noexcept {
        m_negated = negated;
        m_noVar = noVar;
    }

private:
    bool m_negated = false;
    bool m_noVar = false;
};
