#include "host/support/RandomContext.h"

#include "interchange/ExpressionWriter.h"

#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeTreeSeriesEff.h"
#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeOperators.h"

#include <limits>

namespace quelt::host::test {

namespace {

std::unique_ptr<QueltEeNodeRef> alone(QueltEeNode* node) {
    return std::unique_ptr<QueltEeNodeRef>(node->getNodeRef());
}

} // namespace

RandomContext::RandomContext(unsigned seed) : m_random(seed) {
    for (unsigned number = below(4); number > 0; --number) {
        makeDictionary(number);
    }
    for (unsigned number = below(4); number > 0; --number) {
        std::unique_ptr<QueltEeVariable> one = variable(onceIn(2) ? name() : freshName(number));
        const QueltEeVariable* const made = one.get();
        if (m_context->addTopVariable(std::move(one))) {
            m_variables.push_back(made);
        }
    }
    makeEffectivities();
}

std::string RandomContext::name() {
    static const std::string names[] = {"Engine",
                                        "Unit",
                                        "",
                                        " ",
                                        "a/b~c",
                                        "\"quoted\" \\ 'it'",
                                        std::string("nul\0inside", 10),
                                        "line\nbreak\ttab\x01\x7f",
                                        "Gr\xC3\xB6\xC3\x9F"
                                        "e",
                                        "\xE5\xA4\xA7\xE5\xB0\x8F",
                                        "\xF0\x9F\x9A\x9A",
                                        "null",
                                        std::string(300, 'x')};
    return names[below(std::size(names))];
}

std::string RandomContext::freshName(unsigned number) {
    return name() + "#" + std::to_string(number);
}

QueltInGuid RandomContext::guid() {
    QueltInGuid::Bytes bytes{};
    bytes.front() = 0xAB;
    bytes.back() = static_cast<std::uint8_t>(below(12)); // few, so that some are shared
    return QueltInGuid(bytes);
}

int RandomContext::bound() {
    static constexpr int bounds[] = {0,          1,           -1,         99999,
                                     2000000000, -2000000000, 1999999999, std::numeric_limits<int>::max(),
                                     2010,       -2000000001, 2000000001, std::numeric_limits<int>::min()};
    return bounds[below(std::size(bounds))];
}

void RandomContext::makeDictionary(unsigned number) {
    const QueltInString dictionaryName(freshName(number));
    auto dictionary = std::make_unique<QueltEeModelDico>(dictionaryName, guid());
    for (unsigned count = below(7); count > 0; --count) {
        std::unique_ptr<QueltEeVariable> one = variable(onceIn(2) ? name() : freshName(count));
        if (dictionary->addVariable(one.get()) >= 0) {
            m_variables.push_back(one.release());
        }
    }
    m_context->addDictionary(std::move(dictionary));
}

std::unique_ptr<QueltEeVariable> RandomContext::variable(const std::string& name) {
    switch (below(4)) {
    case 0:
    case 1: {
        std::unique_ptr<QueltEeNamedValueVar> named;
        if (onceIn(2)) {
            named = std::make_unique<QueltEeCatOptionVar>(QueltInString(name), guid());
        } else {
            named = std::make_unique<QueltEeSelectionVar>(QueltInString(name), guid());
        }
        for (unsigned count = below(5); count > 0; --count) {
            named->addValue(this->name());
        }
        return named;
    }
    case 2: {
        const auto type = static_cast<QueltEeSerialVar::SerialExternalType>(bound());
        auto serial = std::make_unique<QueltEeSerialVar>(QueltInString(name), guid(), type);
        if (onceIn(2)) {
            serial->makeRevisionTable();
        }
        for (unsigned count = onceIn(2) ? below(5) : 0; count > 0; --count) {
            const QueltInString revision(this->name());
            serial->addRevision(revision, static_cast<unsigned>(bound()));
        }
        return serial;
    }
    default:
        return treeSeriesVariable(name);
    }
}

std::unique_ptr<QueltEeVariable> RandomContext::treeSeriesVariable(const std::string& name) {
    const QueltInGuid identity = guid();
    auto tree =
        std::make_unique<QueltEeTreeSeriesVar>(QueltInString(name), identity, static_cast<unsigned>(bound()));
    tree->addRootElement(static_cast<unsigned>(bound()));
    for (unsigned count = below(6); count > 0; --count) {
        const auto& elements = tree->getElements();
        const unsigned parent = elements[below(elements.size())]->getSeqNumber();
        tree->addElement(static_cast<unsigned>(bound()), parent);
    }
    return tree;
}

void RandomContext::makeEffectivities() {
    for (unsigned number = below(5); number > 0; --number) {
        const bool isBasic = onceIn(2);
        const QueltInString effectivityName(freshName(number));
        const QueltInGuid identity = guid();
        std::unique_ptr<QueltEeEffectivity> effectivity;
        if (isBasic) {
            effectivity = std::make_unique<QueltEeBasicEff>(effectivityName, identity);
        } else {
            effectivity = std::make_unique<QueltEePredefEff>(effectivityName, identity);
        }
        m_context->addEffectivity(std::move(effectivity));
    }
    for (QueltEeEffectivity* const effectivity : m_context->effectivities()) {
        QueltEeExpression* expression = nullptr;
        if (onceIn(2)) {
            expression = multiModelExpression().release();
        } else if (onceIn(2)) {
            expression = genericExpression().release();
        }
        effectivity->setExpr(expression);
        const auto* const basic = QueltEeBasicEff::cast(effectivity);
        for (QueltEeModelDico* const dictionary : m_context->dictionaries()) {
            if (basic != nullptr && onceIn(2)) {
                m_context->addInheritance(*basic, *dictionary);
            }
        }
    }
}

std::unique_ptr<QueltEeVarEff> RandomContext::criterion() {
    std::unique_ptr<QueltEeVarEff> effectivity;
    if (onceIn(8)) {
        effectivity = withoutVariable();
    } else if (onceIn(6) || m_variables.empty()) {
        effectivity = dates();
    } else {
        effectivity = criterionOn(*m_variables[below(m_variables.size())]);
    }
    if (onceIn(3)) {
        effectivity->opNot();
    }
    if (onceIn(3)) {
        effectivity->switchNoVar();
    }
    return effectivity;
}

std::unique_ptr<QueltEeVarEff> RandomContext::criterionOn(const QueltEeVariable& variable) {
    if (const auto* const named = QueltEeNamedValueVar::cast(&variable)) {
        std::unique_ptr<QueltEeNamedValueEff> effectivity;
        if (const auto* const option = QueltEeCatOptionVar::cast(&variable)) {
            effectivity = std::make_unique<QueltEeOptionEff>(option);
        } else {
            effectivity = std::make_unique<QueltEeSelectionEff>(QueltEeSelectionVar::cast(&variable));
        }
        for (unsigned count = named->getValueCount() > 0 ? below(5) : 0; count > 0; --count) {
            effectivity->addValue(below(named->getValueCount()));
        }
        return effectivity;
    }
    if (const auto* const serial = QueltEeSerialVar::cast(&variable)) {
        auto effectivity = std::make_unique<QueltEeSerialEff>(serial);
        for (unsigned count = below(5); count > 0; --count) {
            const auto included = [this] { return static_cast<unsigned char>(onceIn(4) ? 0 : 1); };
            effectivity->addInterval({bound(), bound(), included(), included()});
        }
        return effectivity;
    }
    return treeSeriesCriterion(*QueltEeTreeSeriesVar::cast(&variable));
}

std::unique_ptr<QueltEeVarEff> RandomContext::treeSeriesCriterion(const QueltEeTreeSeriesVar& variable) {
    const auto element = [&] {
        const auto included = static_cast<unsigned char>(onceIn(4) ? 0 : 1);
        const QueltEeTreeSeriesElement* const any =
            variable.getElements()[below(variable.getElements().size())].get();
        return QueltEeTreeSeriesSelectionBound(any, included);
    };
    auto effectivity = std::make_unique<QueltEeTreeSeriesEff>(variable);
    for (unsigned count = below(5); count > 0; --count) {
        QueltEeTreeSeriesSelection selection;
        const unsigned form = below(4);
        if (form == 0) {
            selection.setSingleSelection(element());
        }
        if (form == 1 || form == 3) {
            selection.setFromBound(element());
        }
        if (form == 2 || form == 3) {
            selection.addToBound(element());
        }
        effectivity->addSelection(selection);
    }
    return effectivity;
}

std::unique_ptr<QueltEeVarEff> RandomContext::withoutVariable() {
    switch (below(4)) {
    case 0:
        return std::make_unique<QueltEeOptionEff>(nullptr);
    case 1:
        return std::make_unique<QueltEeSelectionEff>(nullptr);
    case 2:
        return std::make_unique<QueltEeTreeSeriesEff>(nullptr);
    default:
        auto serial = std::make_unique<QueltEeSerialEff>(nullptr);
        serial->addInterval({bound(), bound(), 1, 1});
        return serial;
    }
}

std::unique_ptr<QueltEeVarEff> RandomContext::dates() {
    static constexpr std::int64_t dates[] = {0,     -1,           86400,        1577836800,
                                             86399, -62167219200, 253402300799, 951782400};
    const auto any = [&](std::int64_t openEnd) {
        return onceIn(4) ? openEnd : dates[below(std::size(dates))];
    };
    auto effectivity = std::make_unique<QueltEeDateEff>();
    for (unsigned count = below(4); count > 0; --count) {
        effectivity->addInterval({any(QueltEeDate::s_openBelow), any(QueltEeDate::s_openAbove)});
    }
    return effectivity;
}

RandomContext::OwnedReference RandomContext::node(unsigned depth) {
    if (depth == 0 || onceIn(3)) {
        return leaf();
    }
    if (!onceIn(4)) {
        return group(depth);
    }
    if (onceIn(4)) {
        return alone(new QueltEeNotOp());
    }
    OwnedReference child = node(depth - 1);
    QueltEeSingleOp* single = nullptr;
    if (onceIn(3)) {
        single = new QueltEeNotDomainOp();
    } else {
        single = new QueltEeNotOp();
    }
    single->setChildRef(*child.release());
    return alone(single);
}

RandomContext::OwnedReference RandomContext::group(unsigned depth) {
    QueltEeGroupOp* made = nullptr;
    if (onceIn(2)) {
        made = new QueltEeAndOp();
    } else {
        made = new QueltEeOrOp();
    }
    for (unsigned count = below(5); count > 0; --count) {
        made->addChild(*node(depth - 1).release()->getNode());
    }
    return alone(made);
}

RandomContext::OwnedReference RandomContext::leaf() {
    switch (below(8)) {
    case 0:
        return alone(new QueltEeTrue());
    case 1:
        return alone(new QueltEeFalse());
    case 2:
        return alone(new QueltEeVarEffLeaf());
    case 3:
        return alone(new QueltEeRestrictionEffLeaf(QueltInString(name())));
    case 4:
    case 5:
        if (!m_context->effectivities().empty()) {
            const auto effectivities = m_context->effectivities();
            const auto dictionaries = m_context->dictionaries();
            const bool hasDictionary = !dictionaries.empty() && onceIn(2);
            QueltEeModelDico* const dictionary =
                hasDictionary ? dictionaries[below(dictionaries.size())] : nullptr;
            auto* const made = new QueltEeEffLeaf(effectivities[below(effectivities.size())], dictionary);
            if (onceIn(3)) {
                made->opNot();
            }
            return alone(made);
        }
        [[fallthrough]];
    default:
        return alone(new QueltEeVarEffLeaf(criterion().release()));
    }
}

std::unique_ptr<QueltQmSpecList> RandomContext::list() {
    auto made = std::make_unique<QueltQmSpecList>();
    for (unsigned count = below(6); count > 0; --count) {
        QueltEeVarEff* effectivity = criterion().release();
        made->addVarEff(effectivity);
    }
    for (QueltEeEffectivity* const effectivity : m_context->effectivities()) {
        if (onceIn(3)) {
            made->getNamedEffectivities().Put(*effectivity);
        }
    }
    return made;
}

std::unique_ptr<QueltEeGenericExpression> RandomContext::genericExpression() {
    if (onceIn(2)) {
        return std::make_unique<QueltEeGenericExpression>(onceIn(10) ? nullptr : node(5).release());
    }
    const auto mode = static_cast<QueltEeGenericExpression::ListMode>(onceIn(2) ? 1 : bound());
    return std::make_unique<QueltEeGenericExpression>(onceIn(10) ? nullptr : list().release(), mode);
}

std::string RandomContext::record(unsigned id, bool isChange, bool isBranched) {
    TextBuffer buffer;
    JsonWriter writer(buffer);
    writer.beginObject();
    writer.key(Key::id);
    writer.text(std::to_string(id));
    ExpressionWriter(*m_context).writeBody(writer, *genericExpression());
    writer.key(Key::change);
    writer.flag(isChange);
    writer.key(Key::branch);
    writer.flag(isBranched);
    writer.endObject();
    return std::string(buffer.view());
}

std::unique_ptr<QueltEeExpression> RandomContext::multiModelExpression() {
    const auto dictionaries = m_context->dictionaries();
    if (onceIn(3)) {
        const bool hasDictionary = !dictionaries.empty() && onceIn(2);
        QueltEeModelDico* const dictionary =
            hasDictionary ? dictionaries[below(dictionaries.size())] : nullptr;
        auto filter = std::make_unique<QueltEeFilterExpression>(dictionary, list().release());
        filter->setListMode(onceIn(2) ? 0 : bound());
        return filter;
    }
    if (onceIn(2)) {
        auto change = std::make_unique<QueltEeChangeExpression>();
        fill(*change);
        return change;
    }
    auto effectivity = std::make_unique<QueltEeEffectivityExpression>();
    fill(*effectivity);
    for (QueltEeEffectivity* const named : m_context->effectivities()) {
        QueltInObject* object = named;
        effectivity->addOperation(static_cast<QueltEeExpressionOperation::OperationKind>(below(3)), object);
    }
    return effectivity;
}

void RandomContext::fill(QueltEeMultiModelExpression& expression) {
    if (onceIn(2)) {
        expression.setGlobalCriteria(node(3).release());
    }
    for (const QueltEeModelDico* const dictionary : m_context->dictionaries()) {
        QueltEeNodeRef* inherited = onceIn(2) ? nullptr : node(3).release();
        QueltEeNodeRef* own = onceIn(4) ? nullptr : node(3).release();
        auto criteria = std::make_unique<QueltEeMultiModelExpression::ModelCriteria>(&inherited, &own);
        if (expression.setModelCriteria(*dictionary, criteria.get()) >= 0) {
            (void)criteria.release();
        }
    }
}

} // namespace quelt::host::test
