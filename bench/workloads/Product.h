#pragma once

#include "dictionary/QueltEeModelDico.h"
#include "dictionary/QueltEeNamedValueVar.h"
#include "dictionary/QueltEeSerialVar.h"
#include "dictionary/QueltEeTreeSeriesVar.h"
#include "effectivity/QueltEeVarEff.h"
#include "expression/QueltEeExpressionContext.h"
#include "expression/QueltEeGenericExpression.h"

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

namespace quelt::bench {

/// The same numbers in every run.
class Random {
public:
    using result_type = std::uint32_t;
    static constexpr result_type min() { return std::mt19937::min(); }
    static constexpr result_type max() { return std::mt19937::max(); }
    result_type operator()() { return static_cast<result_type>(m_engine()); }

private:
    std::mt19937 m_engine{20100};
};
using Tree = QueltEeGenericExpression;

QueltInGuid makeGuid(std::uint32_t number);

/// Dictionaries that hold the same twenty options, "Option0" and so on, of twelve values each. The first
/// holds the flat product series "Unit" and its branches besides, "Line".
class Product {
public:
    explicit Product(unsigned dictionaries);

    [[nodiscard]] const QueltEeExpressionContext& context() const noexcept { return m_context; }

    // Criteria with values that `random` chooses; the caller owns them.
    [[nodiscard]] QueltEeVarEff* makeOption(Random& random) const;
    [[nodiscard]] QueltEeVarEff* makeSerial(Random& random) const;
    [[nodiscard]] static QueltEeVarEff* makeDate(Random& random);

private:
    QueltEeExpressionContext m_context; // owns everything
    std::vector<QueltEeCatOptionVar*> m_options;
    QueltEeSerialVar* m_pUnit;
};

// Trees and lists.

/// An AND of eight options.
[[nodiscard]] std::unique_ptr<Tree> makeOptions(const Product& product, Random& random);
/// Forty nodes below an AND: options below five ORs and a NOT, series with three intervals, two dates.
[[nodiscard]] std::unique_ptr<Tree> makeForty(const Product& product, Random& random);
/// An AND of two thousand options.
[[nodiscard]] std::unique_ptr<Tree> makeWide(const Product& product, Random& random);
/// An AND and an OR in turn, each over an option and the next, five hundred deep.
[[nodiscard]] std::unique_ptr<Tree> makeChain(const Product& product, Random& random);
/// Ten options, a series and a date.
[[nodiscard]] std::unique_ptr<Tree> makeList(const Product& product, Random& random);

} // namespace quelt::bench
