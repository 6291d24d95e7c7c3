#pragma once

#include "infrastructure/QueltInTyped.h"

#include <cstdint>

class QueltEeEffectivity;
class QueltEeNode;
class QueltEeNodeRef;
class QueltEeVarEff;

class QueltEVCClassification;
extern template class QUELT_CORE_API QueltInTyped<QueltEVCClassification, QueltInObject>;

/// The kinds of criteria that a subtree holds: evolution (series), variant (options, selections), change,
/// history (dates), effectivity, inherited effectivity.
class QUELT_CORE_API QueltEVCClassification : public QueltInTyped<QueltEVCClassification, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltEVCClassification";

    /// Every flag as `all` says.
    explicit QueltEVCClassification(unsigned char all) noexcept;

    /// Says whether the subtree holds a criterion on a series: yes unless `value` is 0.
    void setEvolution(unsigned char value) noexcept { set(s_evolution, value); }
    /// Says whether the subtree holds a criterion on an option or a selection: yes unless `value` is 0.
    void setVariant(unsigned char value) noexcept { set(s_variant, value); }
    /// Says whether the subtree holds a predefined effectivity: yes unless `value` is 0.
    void setChange(unsigned char value) noexcept { set(s_change, value); }
    /// Says whether the subtree holds a date: yes unless `value` is 0.
    void setHistory(unsigned char value) noexcept { set(s_history, value); }
    /// Says whether the subtree holds an effectivity that is neither predefined nor basic: yes unless
    /// `value` is 0.
    void setEffectivity(unsigned char value) noexcept { set(s_effectivity, value); }
    /// Says whether the subtree holds a basic effectivity: yes unless `value` is 0.
    void setInheritedEff(unsigned char value) noexcept { set(s_inheritedEff, value); }
    /// 1 when the subtree holds a criterion on a series, else 0.
    [[nodiscard]] unsigned char isEvolution() const noexcept { return get(s_evolution); }
    /// 1 when the subtree holds a criterion on an option or a selection, else 0.
    [[nodiscard]] unsigned char isVariant() const noexcept { return get(s_variant); }
    /// 1 when the subtree holds a predefined effectivity, else 0.
    [[nodiscard]] unsigned char isChange() const noexcept { return get(s_change); }
    /// 1 when the subtree holds a date, else 0.
    [[nodiscard]] unsigned char isHistory() const noexcept { return get(s_history); }
    /// 1 when the subtree holds an effectivity that is neither predefined nor basic, else 0.
    [[nodiscard]] unsigned char isEffectivity() const noexcept { return get(s_effectivity); }
    /// 1 when the subtree holds a basic effectivity, else 0.
    [[nodiscard]] unsigned char isInheritedEff() const noexcept { return get(s_inheritedEff); }

    /// "evolution, variant"; "none".
    [[nodiscard]] QueltInString toString() const override;

private:
    friend class QueltCoreEVC_NodeClassifier;
    static constexpr std::uint8_t s_evolution = 1;
    static constexpr std::uint8_t s_variant = 2;
    static constexpr std::uint8_t s_change = 4;
    static constexpr std::uint8_t s_history = 8;
    static constexpr std::uint8_t s_effectivity = 16;
    static constexpr std::uint8_t s_inheritedEff = 32;
    static constexpr std::uint8_t s_all = 63;

    void set(std::uint8_t flag, unsigned char value) noexcept {
        m_flags = static_cast<std::uint8_t>(value != 0 ? m_flags | flag : m_flags & ~flag);
    }
    [[nodiscard]] unsigned char get(std::uint8_t flag) const noexcept {
        return (m_flags & flag) != 0 ? 1 : 0;
    }

    std::uint8_t m_flags;
};

class QueltCoreEVC_NodeClassifier;
extern template class QUELT_CORE_API QueltInTyped<QueltCoreEVC_NodeClassifier, QueltInObject>;

/// Classifies subtrees. What it finds is kept with the nodes, so that classifying a subtree again costs
/// nothing while the subtree has not changed.
class QUELT_CORE_API QueltCoreEVC_NodeClassifier
    : public QueltInTyped<QueltCoreEVC_NodeClassifier, QueltInObject> {
public:
    static constexpr const char* s_className = "QueltCoreEVC_NodeClassifier";

    /// Adds to `classification` the kinds that the subtree holds. Options and selections are variant, serial
    /// and tree series evolution, dates history; an effectivity leaf is change when it refers to a predefined
    /// effectivity, inherited effectivity for a basic one, effectivity for another; constants and leaves that
    /// refer to nothing add nothing. Refused are NOT-domain, E_NOTIMPL, and restriction leaves, E_UNEXPECTED,
    /// however deep; the first one met, a node before its children and those in order, gives the result. A
    /// reference without node, here or below, is E_POINTER. `classification` is as it was after a failure.
    virtual long classify(const QueltEeNodeRef& reference, QueltEVCClassification& classification);

private:
    [[nodiscard]] static std::uint16_t kindOf(const QueltEeVarEff* effectivity);
    [[nodiscard]] static std::uint16_t kindOf(const QueltEeEffectivity* effectivity);
    [[nodiscard]] static std::uint16_t kindOf(const QueltEeNode& node);
    [[nodiscard]] static std::uint16_t find(const QueltEeNode& root);
};
