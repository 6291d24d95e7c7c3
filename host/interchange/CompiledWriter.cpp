#include "interchange/CompiledWriter.h"

#include "effectivity/QueltEeEffectivity.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "expression/QueltEeLeaves.h"

#include <simdjson.h>

namespace quelt::host {

namespace {

void writeGuid(JsonWriter& writer, Key key, const QueltEeDicoObject* object) {
    writer.key(key);
    writer.text(object->getGuid().toString().view());
}

void writeNegated(JsonWriter& writer, bool isNegated) {
    if (isNegated) {
        writer.key(Key::negated);
        writer.flag(true);
    }
}

/// The option criterion that a literal holds, null when it holds none.
const QueltEeOptionEff* optionIn(const QueltEeNodeRef& literal) {
    const auto* const leaf = QueltEeVarEffLeaf::cast(literal.getNode());
    return leaf != nullptr ? QueltEeOptionEff::cast(leaf->getVarEff()) : nullptr;
}

/// Calls `visit` with the name of each value of `criterion`; ends when it answers false.
template <class Visit>
bool eachValueName(const QueltEeOptionEff& criterion, Visit visit) {
    const auto* const option = QueltEeNamedValueVar::cast(criterion.getVar());
    for (const std::uint32_t value : criterion.getValues()) {
        if (!visit(option->getValueName(value))) {
            return false;
        }
    }
    return true;
}

void writeLiteral(JsonWriter& writer, const QueltEeNodeRef& literal) {
    writer.beginObject();
    if (const auto* const change = QueltEeEffLeaf::cast(literal.getNode())) {
        writeGuid(writer, Key::eff, change->getTargetEff());
        writeNegated(writer, change->isNegated() != 0);
    } else if (const QueltEeOptionEff* const criterion = optionIn(literal)) {
        writeGuid(writer, Key::option, criterion->getVar());
        writer.key(Key::in);
        writer.beginArray();
        eachValueName(*criterion, [&](std::string_view name) {
            writer.text(name);
            return true;
        });
        writer.endArray();
        writeNegated(writer, criterion->isNegated() != 0);
    }
    writer.endObject();
}

void writeDnf(JsonWriter& writer, const QueltDnf& dnf) {
    writer.beginArray();
    for (const QueltDnf::Conjunction& conjunction : dnf.getConjunctions()) {
        writer.beginArray();
        for (const QueltEeNodeRef* const literal : conjunction) {
            writeLiteral(writer, *literal);
        }
        writer.endArray();
    }
    writer.endArray();
}

/// Calls `visit` with the GUID and the normal form of each context.
template <class Visit>
void eachContext(const QueltFltEffectivityView& view, Visit visit) {
    auto contexts = view.m_contexts.cBegin();
    while (const QueltInMapEntry* const context = contexts.GetEntryGoToNext()) {
        visit(*QueltInGuid::cast(context->key), *QueltDnf::cast(context->value));
    }
}

void writeView(JsonWriter& writer, const QueltFltDomainEffectivity::Entry& entry) {
    writer.beginObject();
    writer.key(Key::view);
    writer.number(static_cast<std::uint32_t>(entry.kind));
    writer.key(Key::contexts);
    writer.beginArray();
    eachContext(*entry.view, [&](const QueltInGuid& dictionary, const QueltDnf& dnf) {
        writer.beginObject();
        writer.key(Key::dictionary);
        writer.text(dictionary.toString().view());
        writer.key(Key::dnf);
        writeDnf(writer, dnf);
        writer.endObject();
    });
    writer.endArray();
    writer.endObject();
}

void writeDomain(JsonWriter& writer, const QueltFltEffectivity::Entry& entry) {
    writer.beginObject();
    writer.key(Key::domain);
    writer.number(entry.number);
    writer.key(Key::views);
    writer.beginArray();
    for (const QueltFltDomainEffectivity::Entry& view : entry.domain->getViews()) {
        writeView(writer, view);
    }
    writer.endArray();
    writer.endObject();
}

bool isUtf8(std::string_view text) {
    return simdjson::validate_utf8(text.data(), text.size());
}

bool isWritable(const QueltDnf& dnf) {
    for (const QueltDnf::Conjunction& conjunction : dnf.getConjunctions()) {
        for (const QueltEeNodeRef* const literal : conjunction) {
            const QueltEeOptionEff* const criterion = optionIn(*literal);
            if (criterion != nullptr && !eachValueName(*criterion, isUtf8)) {
                return false;
            }
        }
    }
    return true;
}

} // namespace

void writeCompiled(JsonWriter& writer, const QueltFltEffectivity& effectivity) {
    writer.beginObject();
    writer.key(Key::domains);
    writer.beginArray();
    for (const QueltFltEffectivity::Entry& domain : effectivity.getDomains()) {
        writeDomain(writer, domain);
    }
    writer.endArray();
    writer.endObject();
}

bool isWritable(const QueltFltEffectivity& effectivity) {
    bool isGood = true;
    for (const QueltFltEffectivity::Entry& domain : effectivity.getDomains()) {
        for (const QueltFltDomainEffectivity::Entry& view : domain.domain->getViews()) {
            eachContext(*view.view, [&](const QueltInGuid& /*dictionary*/, const QueltDnf& dnf) {
                isGood = isGood && isWritable(dnf);
            });
        }
    }
    return isGood;
}

} // namespace quelt::host
