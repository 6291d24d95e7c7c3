#include "plain/FromCore.h"

#include "dictionary/QueltEeModelDico.h"
#include "dictionary/QueltEeNamedValueVar.h"
#include "dictionary/QueltEeSerialVar.h"
#include "dictionary/QueltEeTreeSeriesVar.h"
#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "expression/QueltEeExpressionContext.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeOperators.h"
#include "expression/QueltQmSpecList.h"

#include <stdexcept>

namespace plain {

namespace {

std::string nameOf(const QueltEeDicoObject& object) {
    return std::string(object.getName().view());
}

NamedValues namedValuesFrom(const QueltEeNamedValueEff& effectivity) {
    const auto& variable = *QueltEeNamedValueVar::cast(effectivity.getVar());
    NamedValues named{nameOf(variable), {}};
    for (const std::uint32_t value : effectivity.getValues()) {
        named.values.emplace_back(variable.getValueName(value));
    }
    return named;
}

Serial serialFrom(const QueltEeSerialEff& effectivity) {
    const QueltEeSerialVar& variable = *effectivity.getOrdVar();
    Serial serial{nameOf(variable),
                  nameOf(*variable.getHolderDico()),
                  variable.getExternalType() == QueltEeSerialVar::SerialExternalType::productSeries,
                  {}};
    for (const QueltEeSerialEff::Interval& interval : effectivity.intervals()) {
        serial.intervals.push_back({interval.a, interval.b, interval.aIncl != 0, interval.bIncl != 0});
    }
    return serial;
}

Criterion criterionFrom(const QueltEeVarEff& effectivity) {
    if (const auto* const named = QueltEeNamedValueEff::cast(&effectivity)) {
        return namedValuesFrom(*named);
    }
    if (const auto* const serial = QueltEeSerialEff::cast(&effectivity)) {
        return serialFrom(*serial);
    }
    if (const auto* const date = QueltEeDateEff::cast(&effectivity)) {
        Dates dates;
        for (const QueltEeDateEff::Interval& interval : date->intervals()) {
            dates.intervals.push_back({interval.from, interval.to});
        }
        return dates;
    }
    throw std::runtime_error("no workload has such a criterion");
}

std::string describe(const NamedValues& named) {
    std::string text = named.variable;
    std::string separator = " in {";
    for (const std::string& value : named.values) {
        text += separator + value;
        separator = ", ";
    }
    return text + "}";
}

std::string describe(const Serial& serial) {
    std::string text = serial.variable;
    std::string separator = " in ";
    for (const Serial::Interval& interval : serial.intervals) {
        text += separator + (interval.isFromIncluded ? "[" : "(") + std::to_string(interval.from) + ", " +
                (interval.to == Serial::s_openTo ? "+inf" : std::to_string(interval.to)) +
                (interval.isToIncluded ? "]" : ")");
        separator = " | ";
    }
    return text;
}

std::string describe(const TreeSeries& series) {
    std::string text = series.variable;
    std::string separator = " in ";
    for (const TreeSeries::Selection& selection : series.selections) {
        text += separator + (selection.isFromIncluded ? "[" : "(");
        if (selection.single) {
            text += std::to_string(*selection.single);
        } else {
            text += std::to_string(*selection.from) + ", " +
                    (selection.to ? std::to_string(*selection.to) : "+inf");
        }
        text += "]";
        separator = " | ";
    }
    return text;
}

std::string describe(const Dates& dates) {
    std::string text = "date";
    std::string separator = " in ";
    for (const Dates::Interval& interval : dates.intervals) {
        text += separator + "[" + QueltEeDate::format(interval.from) + ", " +
                QueltEeDate::format(interval.to) + ")";
        separator = " | ";
    }
    return text;
}

std::string describeCriterion(const Criterion& criterion) {
    return std::visit([](const auto& stated) { return describe(stated); }, criterion);
}

std::string describeNode(const Node& node) {
    if (const auto* const negation = dynamic_cast<const Not*>(&node)) {
        return "NOT(" + describeNode(*negation->child) + ")";
    }
    const auto* const group = dynamic_cast<const Group*>(&node);
    if (group == nullptr) {
        return describeCriterion(dynamic_cast<const Leaf&>(node).criterion);
    }
    std::string text;
    for (const auto& child : group->children) {
        text += (text.empty() ? "" : ", ") + describeNode(*child);
    }
    return (group->isAnd ? "AND(" : "OR(") + text + ")";
}

std::string describeList(const List& list) {
    std::string text;
    for (const Criterion& criterion : list) {
        text += (text.empty() ? "all: " : ", ") + describeCriterion(criterion);
    }
    return text;
}

} // namespace

Context contextFrom(const QueltEeExpressionContext& context) {
    const QueltInMap* dictionaries = nullptr;
    context.GetAllDictionariesByName(dictionaries);
    Context made;
    for (auto values = dictionaries->cBegin(); values.IsEnd() == 0;) {
        const auto& dictionary = *QueltEeModelDico::cast(values.GetValGoToNext());
        Dictionary& plainly = made[nameOf(dictionary)];
        for (const auto& variable : dictionary.getVariables()) {
            plainly.features.insert(nameOf(*variable));
            if (const auto* const series = QueltEeTreeSeriesVar::cast(variable.get())) {
                plainly.branches.emplace(Branches{nameOf(*series), {}});
                for (const auto& element : series->getElements()) {
                    plainly.branches->parents.emplace(
                        element->getSeqNumber(),
                        element->getParent() != nullptr ? element->getParent()->getSeqNumber() : 0);
                }
            }
        }
    }
    return made;
}

std::unique_ptr<Node> nodeFrom(const QueltEeNode& node) {
    if (const auto* const group = QueltEeGroupOp::cast(&node)) {
        auto made = std::make_unique<Group>(group->isAnd());
        for (QueltInObject* const child : group->getChildren().elements()) {
            made->children.push_back(nodeFrom(*QueltEeNodeRef::cast(child)->getNode()));
        }
        return made;
    }
    if (const auto* const negation = QueltEeNotOp::cast(&node)) {
        return std::make_unique<Not>(nodeFrom(*negation->getChildRef()->getNode()));
    }
    return std::make_unique<Leaf>(criterionFrom(*QueltEeVarEffLeaf::cast(&node)->getVarEff()));
}

List listFrom(const QueltQmSpecList& list) {
    List made;
    for (auto criteria = list.getVarEffs().cBegin(); criteria.IsEnd() == 0;) {
        made.push_back(criterionFrom(*QueltEeVarEff::cast(criteria.GetValGoToNext())));
    }
    return made;
}

std::string describe(const Expression& expression) {
    std::string text;
    if (!expression.criteria.empty()) {
        std::string criteria;
        for (const auto& [name, criterion] : expression.criteria) {
            criteria += (criteria.empty() ? "" : ", ") + name + ": own " + describeNode(*criterion);
        }
        text += "2: effectivity(" + criteria + ")\n";
    }
    if (expression.history != nullptr) {
        text += "1: effectivity(global: " + describeNode(*expression.history) + ")\n";
    }
    return text;
}

std::string describe(const Filters& filters) {
    std::string text;
    if (!filters.dates.empty()) {
        text += "1: filter(" + describeList(filters.dates) + ")\n";
    }
    if (!filters.criteria.empty()) {
        text += "2: filter(" + filters.dictionary + ": " + describeList(filters.criteria) + ")\n";
    }
    return text;
}

} // namespace plain
