#include "interchange/Feature.h"

#include "dictionary/QueltEeModelDico.h"
#include "dictionary/QueltEeNamedValueVar.h"
#include "dictionary/QueltEeSerialVar.h"

namespace quelt::host {

namespace {

Key formOn(const QueltEeVariable& variable) {
    if (QueltEeCatOptionVar::isObjectOfThisType(variable) != 0) {
        return Key::option;
    }
    if (QueltEeSelectionVar::isObjectOfThisType(variable) != 0) {
        return Key::selection;
    }
    return QueltEeSerialVar::isObjectOfThisType(variable) != 0 ? Key::serial : Key::treeSeries;
}

} // namespace

Feature::Feature(const QueltEeVariable& variable, bool isFirstBearer)
    : m_variable(variable), m_form(formOn(variable)) {
    TextBuffer buffer;
    JsonWriter writer(buffer);
    writer.beginObject();
    writeVariable(writer, m_form, variable, isFirstBearer);
    writer.key(Key::in);
    writer.beginArray();
    m_writtenBeginning = buffer.view();
    writeValues();
}

void Feature::writeValues() {
    const auto* const variable = QueltEeNamedValueVar::cast(&m_variable);
    if (variable == nullptr) {
        return;
    }
    TextBuffer buffer;
    m_writtenEnds.push_back(0);
    for (std::uint32_t number = 0; number < variable->getValueCount(); ++number) {
        const std::string_view name = variable->getValueName(number);
        m_values.add(name, number);
        JsonWriter(buffer).text(name);
        m_writtenEnds.push_back(buffer.size());
    }
    m_writtenValues = buffer.view();
}

void writeVariable(JsonWriter& writer, Key form, const QueltEeVariable& variable, bool isFirstBearer) {
    writer.key(form);
    writer.text(variable.getName().view());
    if (const QueltEeModelDico* const holder = variable.getHolderDico()) {
        writer.key(Key::of);
        writer.text(holder->getName().view());
    } else if (!isFirstBearer) {
        // Without "of" the name of a variable at the top would be taken for one that a dictionary holds.
        writer.key(Key::of);
        writer.null();
    }
}

} // namespace quelt::host
