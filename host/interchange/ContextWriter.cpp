#include "interchange/ContextWriter.h"

#include "dictionary/QueltEeNamedValueVar.h"
#include "dictionary/QueltEeSerialVar.h"
#include "dictionary/QueltEeTreeSeriesVar.h"
#include "expression/QueltEeGenericExpression.h"
#include "interchange/ExpressionWriter.h"

namespace quelt::host {

namespace {

void writeNameAndGuid(JsonWriter& writer, const QueltEeDicoObject& object) {
    writer.key(Key::name);
    writer.text(object.getName().view());
    writer.key(Key::guid);
    writer.text(object.getGuid().toString().view());
}

void writeNamedValueVariable(JsonWriter& writer, const QueltEeNamedValueVar& variable) {
    writer.key(Key::values);
    writer.beginArray();
    for (std::uint32_t number = 0; number < variable.getValueCount(); ++number) {
        writer.text(variable.getValueName(number));
    }
    writer.endArray();
}

void writeSerialVariable(JsonWriter& writer, const QueltEeSerialVar& variable) {
    writer.key(Key::externalType);
    writer.number(static_cast<int>(variable.getExternalType()));
    const QueltInMap* revisions = nullptr;
    variable.getSeqNb2Revisions(revisions);
    if (revisions == nullptr) {
        return;
    }
    writer.key(Key::revisions);
    writer.beginArray();
    QueltInMap::const_iterator iterator = revisions->cBegin();
    while (const QueltInObject* const object = iterator.GetValGoToNext()) {
        if (const auto* const revision = QueltEeSerialVarValue::cast(object)) {
            writer.beginObject();
            writer.key(Key::rev);
            writer.text(revision->getRev().view());
            writer.key(Key::seq);
            writer.number(revision->getSeqNumber());
            writer.endObject();
        }
    }
    writer.endArray();
}

void writeTreeSeriesVariable(JsonWriter& writer, const QueltEeTreeSeriesVar& variable) {
    writer.key(Key::number);
    writer.number(variable.getNumber());
    writer.key(Key::elements);
    writer.beginArray();
    for (const std::unique_ptr<QueltEeTreeSeriesElement>& element : variable.getElements()) {
        writer.beginObject();
        writer.key(Key::seq);
        writer.number(element->getSeqNumber());
        if (element->getParent() != nullptr) {
            writer.key(Key::parent);
            writer.number(element->getParent()->getSeqNumber());
        }
        writer.endObject();
    }
    writer.endArray();
}

void writeVariable(JsonWriter& writer, const QueltEeVariable& variable) {
    const auto writeHead = [&](std::string_view kind) {
        writer.beginObject();
        writer.key(Key::kind);
        writer.text(kind);
        writeNameAndGuid(writer, variable);
    };
    if (const auto* const option = QueltEeCatOptionVar::cast(&variable)) {
        writeHead("option");
        writeNamedValueVariable(writer, *option);
    } else if (const auto* const selection = QueltEeSelectionVar::cast(&variable)) {
        writeHead("selection");
        writeNamedValueVariable(writer, *selection);
    } else if (const auto* const serial = QueltEeSerialVar::cast(&variable)) {
        writeHead("serial");
        writeSerialVariable(writer, *serial);
    } else if (const auto* const treeSeries = QueltEeTreeSeriesVar::cast(&variable)) {
        writeHead("treeSeries");
        writeTreeSeriesVariable(writer, *treeSeries);
    }
    writer.endObject();
}

void writeDictionary(JsonWriter& writer, const QueltEeModelDico& dictionary) {
    writer.beginObject();
    writeNameAndGuid(writer, dictionary);
    if (!dictionary.getVariables().empty()) {
        writer.key(Key::variables);
        writer.beginArray();
        for (const std::unique_ptr<QueltEeVariable>& variable : dictionary.getVariables()) {
            writeVariable(writer, *variable);
        }
        writer.endArray();
    }
    writer.endObject();
}

void writeInheritance(JsonWriter& writer, const QueltEeBasicEff& effectivity, const LoadedContext& context) {
    const QueltInMap* dictionaries = nullptr;
    context.expressionContext().GetAllDictionariesForInheritedEffectivity(effectivity, dictionaries);
    if (dictionaries == nullptr || dictionaries->IsEmpty() != 0) {
        return;
    }
    writer.key(Key::inheritedIn);
    writer.beginArray();
    QueltInMap::const_iterator iterator = dictionaries->cBegin();
    while (const QueltInObject* const object = iterator.GetValGoToNext()) {
        if (const auto* const dictionary = QueltEeModelDico::cast(object)) {
            writer.text(dictionary->getName().view());
        }
    }
    writer.endArray();
}

void writeExpression(JsonWriter& writer, const QueltEeExpression& expression,
                     ExpressionWriter& expressionWriter) {
    writer.key(Key::expression);
    writer.beginObject();
    if (const auto* const generic = QueltEeGenericExpression::cast(&expression)) {
        expressionWriter.writeBody(writer, *generic);
    } else {
        writer.key(Key::multiModel);
        expressionWriter.writeMultiModel(writer, expression);
    }
    writer.endObject();
}

void writeEffectivity(JsonWriter& writer, const QueltEeEffectivity& effectivity, const LoadedContext& context,
                      ExpressionWriter& expressionWriter) {
    const auto* const basic = QueltEeBasicEff::cast(&effectivity);
    writer.beginObject();
    writer.key(Key::kind);
    writer.text(basic != nullptr ? "basic" : "predefined");
    writeNameAndGuid(writer, effectivity);
    QueltEeExpression* expression = nullptr;
    effectivity.getExpr(expression);
    if (expression != nullptr) {
        writeExpression(writer, *expression, expressionWriter);
    }
    if (basic != nullptr) {
        writeInheritance(writer, *basic, context);
    }
    writer.endObject();
}

template <class Objects, class Write>
void writeUnlessEmpty(JsonWriter& writer, Key key, const Objects& objects, Write write) {
    if (objects.empty()) {
        return;
    }
    writer.key(key);
    writer.beginArray();
    for (const auto* const object : objects) {
        write(*object);
    }
    writer.endArray();
}

} // namespace

void writeContext(JsonWriter& writer, const LoadedContext& context) {
    ExpressionWriter expressionWriter(context);
    writer.beginObject();
    writer.key(Key::format);
    writer.text("quelt-context/1");
    writeUnlessEmpty(writer, Key::dictionaries, context.dictionaries(),
                     [&](const QueltEeModelDico& dictionary) { writeDictionary(writer, dictionary); });
    writeUnlessEmpty(writer, Key::variables, context.topVariables(),
                     [&](const QueltEeVariable& variable) { writeVariable(writer, variable); });
    writeUnlessEmpty(writer, Key::effectivities, context.effectivities(),
                     [&](const QueltEeEffectivity& effectivity) {
                         writeEffectivity(writer, effectivity, context, expressionWriter);
                     });
    writer.endObject();
}

} // namespace quelt::host
