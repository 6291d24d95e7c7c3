#pragma once

#include "expression/QueltEeConfiguration.h"

class QueltEeExpression;
class QueltEeModelDico;
class QueltEeNode;

/// Tells whether expressions hold in configurations. Uses bounded stack for trees of any depth, and looks at
/// an aliased node once, however many aliases there are.
///
/// A variable effectivity is asked with the configuration's value of its variable (dates: with the date). A
/// value that the variable does not have is as good as none: a name that is not among the values, a number
/// without element in a tree series, a number that needs more than 32 bits in a flat one, a date of
/// QueltEeDate::s_openAbove. An effectivity leaf holds where its effectivity holds, in whichever dictionary.
class QUELT_CORE_API QueltEeEvaluator {
public:
    /// For `configuration`, which must outlive the evaluator.
    explicit QueltEeEvaluator(const QueltEeConfiguration& configuration) noexcept
        : m_configuration(configuration) {}

    /// Whether the tree below `node` holds; for NOT-domain see QueltEeNotDomainOp. A restriction leaf is
    /// E_UNEXPECTED; a leaf without effectivity, a missing child, and a class that the core does not know are
    /// E_INVALIDARG; `holds` is then as it was. Children are looked at in order, until the result is certain.
    long evaluate(const QueltEeNode& node, bool& holds) const;
    /// Whether `expression` holds in `dictionary`.
    ///
    /// Of a multi-model expression the global criterion must hold, and the inherited and the own part that
    /// are filed under the dictionary. Where parts are filed, but none under this dictionary, the expression
    /// does not hold; where none are filed at all, it holds in every dictionary. Without dictionary (null)
    /// the parts do not count. In an effectivity expression the operations count besides: those of kind 0
    /// need their change absent, those of kind 1 present, of those of kind 2 one is enough.
    ///
    /// A filter and a generic expression hold as their criteria or their tree do, in whichever dictionary;
    /// with neither list nor tree a generic expression holds. An expression of another class, an operation of
    /// another kind and one without effectivity are E_INVALIDARG; all else as above.
    long evaluate(const QueltEeExpression& expression, const QueltEeModelDico* dictionary, bool& holds) const;

private:
    const QueltEeConfiguration& m_configuration;
};
