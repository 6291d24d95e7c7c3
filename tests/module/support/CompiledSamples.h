#pragma once

#include "compiled/QueltBioBuffer.h"
#include "compiled/QueltFltEffectivity.h"
#include "effectivity/QueltEeEffectivity.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "module/support/Guids.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace quelt::test {

/// The text of guidOf(number).
[[nodiscard]] std::string guidTextOf(std::uint8_t number);

/// A literal on the change with the GUID that ends in `number`, or on the option with it.
struct SampleLiteral {
    std::uint8_t number;
    bool negated = false;
    bool isOption = false;
};
using SampleDnf = std::vector<std::vector<SampleLiteral>>;
/// By the last byte of the dictionary's GUID.
using SampleView = std::vector<std::pair<std::uint8_t, SampleDnf>>;

/// Effectivities as compiled binaries hold them.
class CompiledSamples {
public:
    /// A normal form; the caller owns it.
    [[nodiscard]] QueltDnf* makeDnf(const SampleDnf& dnf);
    /// A view; the caller owns it.
    [[nodiscard]] QueltFltEffectivityView* makeView(const SampleView& view);
    /// An effectivity with the view as the full one of domain 2.
    [[nodiscard]] std::unique_ptr<QueltFltEffectivity> make(const SampleView& view) {
        return holding(makeView(view));
    }
    /// An effectivity with `view`, which it takes over, likewise.
    [[nodiscard]] static std::unique_ptr<QueltFltEffectivity>
    holding(QueltFltEffectivityView* view, unsigned int domain = 2, std::uint32_t kind = 0);
    /// The same effectivity compiled.
    [[nodiscard]] QueltBioBuffer compiled(const SampleView& view) { return compiled(*make(view)); }
    [[nodiscard]] static QueltBioBuffer compiled(const QueltFltEffectivity& effectivity);
    /// A compiled effectivity of one context, the dictionary 1, with this normal form.
    [[nodiscard]] QueltBioBuffer compiledDnf(const SampleDnf& dnf) { return compiled({{1, dnf}}); }

private:
    std::vector<std::unique_ptr<QueltEePredefEff>> m_changes;
    std::vector<std::unique_ptr<QueltEeCatOptionVar>> m_options;
};

} // namespace quelt::test
