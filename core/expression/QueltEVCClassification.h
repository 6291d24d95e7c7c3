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

    void setEvolution(unsigned char value) noexcept { set(s_evolution, value); }
    void setVariant(unsigned char value) noexcept { set(s_variant, value); }
    void setChange(unsigned char value) noexcept { set(s_change, value); }
    void setHistory(unsigned char value) noexcept { set(s_history, value); }
    void setEffectivity(unsigned char value) noexcept { set(s_effectivity, value); }
    void setInheritedEff(unsigned char value) noexcept { set(s_inheritedEff, value); }
    [[nodiscard]] unsigned char isEvolution() const noexcept { return get(s_evolution); }
    [[nodiscard]] unsigned char isVariant() const noexcept { return get(s_variant); }
    [[nodiscard]] unsigned char isChange() const noexcept { return get(s_change); }
    [[nodiscard]] unsigned char isHistory() const noexcept { return get(s_history); }
    [[nodiscard]] unsigned char isEffectivity() const noexcept { return get(s_effectivity); }
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
