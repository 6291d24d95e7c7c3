#include "plain/Plain.h"

#include <algorithm>
#include <stdexcept>

namespace plain {

namespace {

struct Parts {
    bool hasDates = false;
    bool hasOthers = false;
};

Parts classify(const Node& node) {
    if (const auto* const group = dynamic_cast<const Group*>(&node)) {
        Parts parts;
        for (const auto& child : group->children) {
            const Parts ofChild = classify(*child);
            parts.hasDates |= ofChild.hasDates;
            parts.hasOthers |= ofChild.hasOthers;
        }
        return parts;
    }
    if (const auto* const negation = dynamic_cast<const Not*>(&node)) {
        return classify(*negation->child);
    }
    const bool isDate = std::holds_alternative<Dates>(dynamic_cast<const Leaf&>(node).criterion);
    return {isDate, !isDate};
}

/// Calls `visit` with each criterion below `node`.
template <class Visit>
void eachCriterion(Node& node, const Visit& visit) {
    if (auto* const group = dynamic_cast<Group*>(&node)) {
        for (const auto& child : group->children) {
            eachCriterion(*child, visit);
        }
    } else if (auto* const negation = dynamic_cast<Not*>(&node)) {
        eachCriterion(*negation->child, visit);
    } else {
        visit(dynamic_cast<Leaf&>(node).criterion);
    }
}

std::set<std::string> namesOf(const Context& context) {
    std::set<std::string> names;
    for (const auto& [name, dictionary] : context) {
        names.insert(name);
    }
    return names;
}

void keepOnly(std::set<std::string>& possible, const std::string& name) {
    if (!possible.contains(name)) {
        throw std::runtime_error("no dictionary for " + name);
    }
    possible = {name};
}

void shift(Serial& serial) {
    if (!serial.isProductSeries) {
        return;
    }
    for (Serial::Interval& interval : serial.intervals) {
        if (interval.from != Serial::s_openFrom) {
            --interval.from;
        }
        if (interval.to != Serial::s_openTo) {
            --interval.to;
        }
        interval.isFromIncluded = true;
        interval.isToIncluded = true;
    }
}

/// Leaves in `possible` the dictionaries in which the criterion makes sense.
void narrow(Criterion& criterion, const Context& context, std::set<std::string>& possible) {
    if (const auto* const named = std::get_if<NamedValues>(&criterion)) {
        std::erase_if(possible, [&](const std::string& name) {
            return !context.at(name).features.contains(named->variable);
        });
    } else if (auto* const serial = std::get_if<Serial>(&criterion)) {
        keepOnly(possible, serial->dictionary);
        shift(*serial);
    } else if (const auto* const series = std::get_if<TreeSeries>(&criterion)) {
        keepOnly(possible, series->dictionary);
    }
    if (possible.empty()) {
        throw std::runtime_error("no dictionary");
    }
}

/// Sorts the children of a conjunction, and of those within it, into dates and others.
void sortOut(Group& conjunction, std::vector<Node*>& dates, std::vector<Node*>& others) {
    for (const auto& child : conjunction.children) {
        const Parts parts = classify(*child);
        if (!parts.hasDates || !parts.hasOthers) {
            (parts.hasDates ? dates : others).push_back(child.get());
            continue;
        }
        auto* const group = dynamic_cast<Group*>(child.get());
        if (group == nullptr || !group->isAnd) {
            throw std::runtime_error("dates that cannot be set apart");
        }
        sortOut(*group, dates, others);
    }
}

std::unique_ptr<Node> makeConjunction(const std::vector<Node*>& nodes) {
    if (nodes.size() == 1) {
        return clone(*nodes.front());
    }
    auto group = std::make_unique<Group>(true);
    for (const Node* const node : nodes) {
        group->children.push_back(clone(*node));
    }
    return group;
}

} // namespace

std::unique_ptr<Node> clone(const Node& node) {
    if (const auto* const group = dynamic_cast<const Group*>(&node)) {
        auto copy = std::make_unique<Group>(group->isAnd);
        copy->children.reserve(group->children.size());
        for (const auto& child : group->children) {
            copy->children.push_back(clone(*child));
        }
        return copy;
    }
    if (const auto* const negation = dynamic_cast<const Not*>(&node)) {
        return std::make_unique<Not>(clone(*negation->child));
    }
    return std::make_unique<Leaf>(dynamic_cast<const Leaf&>(node).criterion);
}

Expression convert(Node& root, const Context& context) {
    Expression expression;
    std::vector<Node*> others;
    const Parts parts = classify(root);
    if (!parts.hasDates) {
        others.push_back(&root);
    } else if (!parts.hasOthers) {
        expression.history = clone(root);
    } else {
        auto* const group = dynamic_cast<Group*>(&root);
        if (group == nullptr || !group->isAnd) {
            throw std::runtime_error("dates that cannot be set apart");
        }
        std::vector<Node*> dates;
        sortOut(*group, dates, others);
        expression.history = makeConjunction(dates);
    }
    if (others.empty()) {
        return expression;
    }
    std::set<std::string> possible = namesOf(context);
    for (Node* const node : others) {
        eachCriterion(*node, [&](Criterion& criterion) { narrow(criterion, context, possible); });
    }
    for (const std::string& name : possible) {
        expression.criteria.emplace(name, makeConjunction(others));
    }
    return expression;
}

Filters convert(List& list, const Context& context) {
    Filters filters;
    std::set<std::string> possible = namesOf(context);
    for (Criterion& criterion : list) {
        if (std::holds_alternative<Dates>(criterion)) {
            filters.dates.push_back(criterion);
            continue;
        }
        narrow(criterion, context, possible);
        filters.criteria.push_back(criterion);
    }
    if (!filters.criteria.empty()) {
        filters.dictionary = *possible.begin();
    }
    return filters;
}

} // namespace plain
