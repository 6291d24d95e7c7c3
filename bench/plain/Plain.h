#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <variant>
#include <vector>

/// What the conversion is compared with: the same work, for what the workloads hold, in straightforward C++.
/// It has no diagnostics, no arena and no types of its own making.
namespace plain {

/// What a dictionary holds of a series with branches: each element's parent, by number.
struct Branches {
    std::string name;
    std::map<unsigned, unsigned> parents;
};

struct Dictionary {
    std::set<std::string> features;
    std::optional<Branches> branches; // of the product series
};

/// Dictionaries by name.
using Context = std::map<std::string, Dictionary>;

/// One of the values of an option or a selection.
struct NamedValues {
    std::string variable;
    std::vector<std::string> values;
};

/// Sequence numbers of a flat series, which one dictionary holds.
struct Serial {
    struct Interval {
        int from;
        int to;
        bool isFromIncluded;
        bool isToIncluded;
    };
    static constexpr int s_openFrom = -2000000000;
    static constexpr int s_openTo = 2000000000;

    std::string variable;
    std::string dictionary;
    bool isProductSeries = true;
    std::vector<Interval> intervals;
};

/// Elements of a series with branches, which one dictionary holds.
struct TreeSeries {
    struct Selection {
        std::optional<unsigned> single;
        std::optional<unsigned> from;
        std::optional<unsigned> to;
        bool isFromIncluded = true;
        bool isToIncluded = true;
    };

    std::string variable;
    std::string dictionary;
    std::vector<Selection> selections;
};

/// Seconds since 1970.
struct Dates {
    struct Interval {
        std::int64_t from;
        std::int64_t to;
    };
    std::vector<Interval> intervals;
};

using Criterion = std::variant<NamedValues, Serial, TreeSeries, Dates>;

struct Node {
    virtual ~Node() = default;
};

struct Group : Node {
    explicit Group(bool isConjunction) : isAnd(isConjunction) {}
    bool isAnd;
    std::vector<std::unique_ptr<Node>> children;
};

struct Not : Node {
    explicit Not(std::unique_ptr<Node> negated) : child(std::move(negated)) {}
    std::unique_ptr<Node> child;
};

struct Leaf : Node {
    explicit Leaf(Criterion stated) : criterion(std::move(stated)) {}
    Criterion criterion;
};

std::unique_ptr<Node> clone(const Node& node);

/// What a tree is converted to: dates, and a criterion for each dictionary in which it applies.
struct Expression {
    std::unique_ptr<Node> history;
    std::map<std::string, std::unique_ptr<Node>> criteria;
};
/// Throws std::runtime_error for what cannot be converted. Serial intervals of `root` are rewritten in place.
Expression convert(Node& root, const Context& context);
/// Puts series with branches in the place of flat ones. Throws std::runtime_error where there is none.
void branch(Expression& expression, const Context& context);

using List = std::vector<Criterion>;

/// What a list is converted to: its dates, and the other criteria in the first dictionary that has them all.
struct Filters {
    List dates;
    List criteria;
    std::string dictionary;
};
Filters convert(List& list, const Context& context);

using Guid = std::array<std::uint8_t, 16>;

struct Operation {
    Guid change;
    bool isApplied;
};
struct Changes {
    std::vector<Operation> operations;
    std::vector<Guid> contexts;
};
/// What a compiled change holds. Throws std::runtime_error for anything else.
Changes decode(std::span<const std::uint8_t> binary);

} // namespace plain
