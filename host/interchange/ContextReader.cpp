#include "interchange/ContextReader.h"

#include "dictionary/QueltEeNamedValueVar.h"
#include "dictionary/QueltEeSerialVar.h"
#include "dictionary/QueltEeTreeSeriesVar.h"
#include "interchange/ExpressionReader.h"

#include <string>

namespace quelt::host {

namespace {

using VariableFields = Fields<Key::kind, Key::name, Key::guid, Key::values, Key::externalType, Key::revisions,
                              Key::number, Key::elements>;
using EffectivityFields = Fields<Key::kind, Key::name, Key::guid, Key::expression, Key::inheritedIn>;
using BodyFields = Fields<Key::tree, Key::list, Key::named, Key::mode, Key::multiModel>;

/// Lets a variable have the keys that all have, and `more`.
void allowKeys(const VariableFields& fields, VariableFields::Mask more, const char* owner) {
    fields.allowOnly(VariableFields::s_mask<Key::kind, Key::name, Key::guid> | more,
                     [owner] { return owner; });
}

template <class Variable>
std::unique_ptr<QueltEeVariable> readNamedValueVariable(const VariableFields& fields,
                                                        const QueltInString& name, const QueltInGuid& guid) {
    auto variable = std::make_unique<Variable>(name, guid);
    fields.need<Key::values>().eachItem([&](const Value& item) {
        const std::string_view value = item.text();
        if (variable->addValue(value) + 1 != variable->getValueCount()) {
            item.refuse("value " + inQuotes(value) + " given twice");
        }
    });
    return variable;
}

std::unique_ptr<QueltEeVariable> readSerialVariable(const VariableFields& fields, const QueltInString& name,
                                                    const QueltInGuid& guid) {
    const auto externalType =
        static_cast<QueltEeSerialVar::SerialExternalType>(fields.need<Key::externalType>().int32());
    auto variable = std::make_unique<QueltEeSerialVar>(name, guid, externalType);
    if (const std::optional<Value> revisions = fields.find<Key::revisions>()) {
        variable->makeRevisionTable();
        revisions->eachItem([&](const Value& item) {
            const Fields<Key::rev, Key::seq> revision(item);
            const QueltInString text(revision.need<Key::rev>().text());
            variable->addRevision(text, revision.need<Key::seq>().uint32());
        });
    }
    return variable;
}

void readElement(const Value& item, QueltEeTreeSeriesVar& variable) {
    const Fields<Key::seq, Key::parent> fields(item);
    const Value seq = fields.need<Key::seq>();
    const unsigned int number = seq.uint32();
    QueltEeTreeSeriesElement* known = nullptr;
    variable.getElement(number, known);
    if (known != nullptr) {
        seq.refuse("element " + std::to_string(number) + " given twice");
    }
    const std::optional<Value> parent = fields.find<Key::parent>();
    if (!parent) {
        if (variable.addRootElement(number) < 0) {
            item.refuse("a second element without parent");
        }
        return;
    }
    if (variable.addElement(number, parent->uint32()) < 0) {
        parent->refuse("no element " + std::to_string(parent->uint32()) + " stands before this one");
    }
}

std::unique_ptr<QueltEeVariable> readTreeSeriesVariable(const VariableFields& fields,
                                                        const QueltInString& name, const QueltInGuid& guid) {
    auto variable = std::make_unique<QueltEeTreeSeriesVar>(name, guid, fields.need<Key::number>().uint32());
    const Value elements = fields.need<Key::elements>();
    elements.eachItem([&](const Value& item) { readElement(item, *variable); });
    if (variable->getRootTreeSeriesElement() == nullptr) {
        elements.refuse("no element without parent");
    }
    return variable;
}

std::unique_ptr<QueltEeVariable> readVariable(const Value& value) {
    const VariableFields fields(value);
    const Value kind = fields.need<Key::kind>();
    const std::string_view kindName = kind.text();
    const QueltInString name(fields.need<Key::name>().text());
    const QueltInGuid guid = fields.need<Key::guid>().guid();
    if (kindName == "option") {
        allowKeys(fields, VariableFields::s_mask<Key::values>, "an option");
        return readNamedValueVariable<QueltEeCatOptionVar>(fields, name, guid);
    }
    if (kindName == "selection") {
        allowKeys(fields, VariableFields::s_mask<Key::values>, "a selection");
        return readNamedValueVariable<QueltEeSelectionVar>(fields, name, guid);
    }
    if (kindName == "serial") {
        allowKeys(fields, VariableFields::s_mask<Key::externalType, Key::revisions>, "a serial variable");
        return readSerialVariable(fields, name, guid);
    }
    if (kindName == "treeSeries") {
        allowKeys(fields, VariableFields::s_mask<Key::number, Key::elements>, "a tree series");
        return readTreeSeriesVariable(fields, name, guid);
    }
    kind.refuse("unknown kind " + inQuotes(kindName) +
                " (option, selection, serial and treeSeries are known)");
}

[[noreturn]] void refuseRepeatedName(const Value& object, std::string_view what, std::string_view name) {
    object.place().child(nameOf(Key::name)).refuse(std::string(what) + " " + inQuotes(name) + " given twice");
}

void readDictionary(const Value& value, LoadedContext& context) {
    const Fields<Key::name, Key::guid, Key::variables> fields(value);
    const std::string_view name = fields.need<Key::name>().text();
    if (context.findDictionary(name) != nullptr) {
        refuseRepeatedName(value, "dictionary", name);
    }
    auto dictionary =
        std::make_unique<QueltEeModelDico>(QueltInString(name), fields.need<Key::guid>().guid());
    if (const std::optional<Value> variables = fields.find<Key::variables>()) {
        variables->eachItem([&](const Value& item) {
            std::unique_ptr<QueltEeVariable> variable = readVariable(item);
            if (dictionary->addVariable(variable.get()) < 0) {
                refuseRepeatedName(item, "variable", variable->getName().view());
            }
            (void)variable.release();
        });
    }
    context.addDictionary(std::move(dictionary));
}

/// Reads everything of an effectivity but its expression, which may name effectivities that come later.
void readEffectivity(const Value& value, LoadedContext& context) {
    const EffectivityFields fields(value);
    const Value kind = fields.need<Key::kind>();
    const std::string_view name = fields.need<Key::name>().text();
    const QueltInGuid guid = fields.need<Key::guid>().guid();
    std::unique_ptr<QueltEeEffectivity> effectivity;
    if (kind.text() == "predefined") {
        fields.allowOnly(EffectivityFields::s_mask<Key::kind, Key::name, Key::guid, Key::expression>,
                         [] { return "a predefined effectivity"; });
        effectivity = std::make_unique<QueltEePredefEff>(QueltInString(name), guid);
    } else if (kind.text() == "basic") {
        effectivity = std::make_unique<QueltEeBasicEff>(QueltInString(name), guid);
    } else {
        kind.refuse("unknown kind " + inQuotes(kind.text()) + " (predefined and basic are known)");
    }
    if (!context.addEffectivity(std::move(effectivity))) {
        refuseRepeatedName(value, "effectivity", name);
    }
}

void readInheritance(const Value& inheritedIn, const QueltEeBasicEff& effectivity,
                     const ExpressionReader& reader, LoadedContext& context) {
    inheritedIn.eachItem([&](const Value& name) {
        if (!context.addInheritance(effectivity, reader.findDictionary(name))) {
            name.refuse("dictionary " + inQuotes(name.text()) + " given twice");
        }
    });
}

std::unique_ptr<QueltEeExpression> readBody(const Value& value, const ExpressionReader& reader) {
    const BodyFields fields(value);
    if (const std::optional<Value> tree = fields.find<Key::tree>()) {
        fields.allowOnly(BodyFields::s_mask<Key::tree>, [] { return "'tree'"; });
        return reader.readTree(*tree);
    }
    if (const std::optional<Value> list = fields.find<Key::list>()) {
        fields.allowOnly(BodyFields::s_mask<Key::list, Key::named, Key::mode>, [] { return "'list'"; });
        return reader.readList(*list, fields.find<Key::named>(), fields.find<Key::mode>());
    }
    if (const std::optional<Value> multiModel = fields.find<Key::multiModel>()) {
        fields.allowOnly(BodyFields::s_mask<Key::multiModel>, [] { return "'multiModel'"; });
        return reader.readMultiModel(*multiModel);
    }
    value.refuse("expected 'tree', 'list' or 'multiModel'");
}

/// Reads what readEffectivity left out.
void completeEffectivity(const Value& value, QueltEeEffectivity& effectivity, LoadedContext& context) {
    const EffectivityFields fields(value);
    const ExpressionReader reader(context);
    if (const std::optional<Value> body = fields.find<Key::expression>()) {
        QueltEeExpression* expression = readBody(*body, reader).release();
        effectivity.setExpr(expression);
    }
    const QueltEeBasicEff* const basic = QueltEeBasicEff::cast(&effectivity);
    const std::optional<Value> inheritedIn = fields.find<Key::inheritedIn>();
    if (basic != nullptr && inheritedIn) {
        readInheritance(*inheritedIn, *basic, reader, context);
    }
}

void readEffectivities(const Value& effectivities, LoadedContext& context) {
    effectivities.eachItem([&](const Value& item) { readEffectivity(item, context); });
    std::size_t index = 0;
    effectivities.eachItem(
        [&](const Value& item) { completeEffectivity(item, *context.effectivities()[index++], context); });
}

} // namespace

std::unique_ptr<LoadedContext> readContext(PaddedText text) {
    JsonParser parser;
    const Value root(parser.parse(withoutUtf8Mark(text)), Place());
    const Fields<Key::format, Key::dictionaries, Key::variables, Key::effectivities> fields(root);
    const Value format = fields.need<Key::format>();
    if (format.text() != "quelt-context/1") {
        format.refuse("unknown format " + inQuotes(format.text()) + ", expected 'quelt-context/1'");
    }
    auto context = std::make_unique<LoadedContext>();
    if (const std::optional<Value> dictionaries = fields.find<Key::dictionaries>()) {
        dictionaries->eachItem([&](const Value& item) { readDictionary(item, *context); });
    }
    if (const std::optional<Value> variables = fields.find<Key::variables>()) {
        variables->eachItem([&](const Value& item) {
            std::unique_ptr<QueltEeVariable> variable = readVariable(item);
            const QueltInString name = variable->getName();
            if (!context->addTopVariable(std::move(variable))) {
                refuseRepeatedName(item, "variable", name.view());
            }
        });
    }
    if (const std::optional<Value> effectivities = fields.find<Key::effectivities>()) {
        readEffectivities(*effectivities, *context);
    }
    return context;
}

} // namespace quelt::host
