#pragma once

namespace quelt {

/// NOT and NOT-domain above something. In which order they stand makes no difference, and twice the same is
/// nothing (see QueltEeNotDomainOp), so an exclusive or of each is all that counts.
struct Negations {
    bool negated = false;       ///< an odd number of NOTs
    bool domainNegated = false; ///< an odd number of NOT-domains

    /// True when both come to the same.
    friend bool operator==(const Negations&, const Negations&) = default;
    /// Both together.
    [[nodiscard]] Negations with(const Negations& other) const noexcept {
        return {negated != other.negated, domainNegated != other.domainNegated};
    }
    /// True when a constant, and the kind of a group, change into the other one.
    [[nodiscard]] bool turnRound() const noexcept { return negated != domainNegated; }
    /// How many there are.
    [[nodiscard]] int count() const noexcept { return (negated ? 1 : 0) + (domainNegated ? 1 : 0); }
};

} // namespace quelt
