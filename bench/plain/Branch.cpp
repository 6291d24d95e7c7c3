#include "plain/Plain.h"

#include <stdexcept>

namespace plain {

namespace {

unsigned findElement(const Branches& branches, int number) {
    const auto element = static_cast<unsigned>(number);
    if (!branches.parents.contains(element)) {
        throw std::runtime_error("no element " + std::to_string(number));
    }
    return element;
}

TreeSeries::Selection select(const Branches& branches, const Serial::Interval& interval) {
    TreeSeries::Selection selection;
    if (interval.from == interval.to) {
        selection.single = findElement(branches, interval.from);
        return selection;
    }
    selection.from = findElement(branches, interval.from);
    selection.isFromIncluded = interval.isFromIncluded;
    if (interval.to != Serial::s_openTo) {
        selection.to = findElement(branches, interval.to);
    }
    return selection;
}

TreeSeries makeTreeSeries(const Serial& serial, const Context& context) {
    const std::optional<Branches>& branches = context.at(serial.dictionary).branches;
    if (!branches) {
        throw std::runtime_error("no branches in " + serial.dictionary);
    }
    TreeSeries series{branches->name, serial.dictionary, {}};
    for (const Serial::Interval& interval : serial.intervals) {
        series.selections.push_back(select(*branches, interval));
    }
    return series;
}

void branchNode(Node& node, const Context& context) {
    if (auto* const group = dynamic_cast<Group*>(&node)) {
        for (const auto& child : group->children) {
            branchNode(*child, context);
        }
    } else if (auto* const negation = dynamic_cast<Not*>(&node)) {
        branchNode(*negation->child, context);
    } else if (auto* const leaf = dynamic_cast<Leaf*>(&node)) {
        const auto* const serial = std::get_if<Serial>(&leaf->criterion);
        if (serial != nullptr && serial->isProductSeries) {
            leaf->criterion = makeTreeSeries(*serial, context);
        }
    }
}

} // namespace

void branch(Expression& expression, const Context& context) {
    for (const auto& [name, criterion] : expression.criteria) {
        branchNode(*criterion, context);
    }
}

} // namespace plain
