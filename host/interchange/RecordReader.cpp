#include "interchange/RecordReader.h"

#include "interchange/CompiledReader.h"

namespace quelt::host {

namespace {

using RecordFields = Fields<Key::id, Key::tree, Key::list, Key::binary, Key::compiled, Key::named, Key::mode,
                            Key::change, Key::basicEff, Key::branch>;

constexpr RecordFields::Mask s_withAny = RecordFields::s_mask<Key::id>;
constexpr RecordFields::Mask s_withExpression =
    s_withAny | RecordFields::s_mask<Key::change, Key::basicEff, Key::branch>;

std::unique_ptr<QueltEeGenericExpression> readExpression(const RecordFields& fields,
                                                         const ExpressionReader& reader) {
    if (const std::optional<Value> tree = fields.find<Key::tree>()) {
        fields.allowOnly(s_withExpression | RecordFields::s_mask<Key::tree>, [] { return "'tree'"; });
        return reader.readTree(*tree);
    }
    if (const std::optional<Value> list = fields.find<Key::list>()) {
        fields.allowOnly(s_withExpression | RecordFields::s_mask<Key::list, Key::named, Key::mode>,
                         [] { return "'list'"; });
        return reader.readList(*list, fields.find<Key::named>(), fields.find<Key::mode>());
    }
    fields.place().refuse("expected 'tree', 'list', 'binary' or 'compiled'");
}

/// The compiled binary that is the record's body; null when it has a body of another form, or none.
std::unique_ptr<QueltBioBuffer> readBinaryBody(const RecordFields& fields) {
    if (fields.has<Key::tree>() || fields.has<Key::list>()) {
        return nullptr;
    }
    if (const std::optional<Value> binary = fields.find<Key::binary>()) {
        fields.allowOnly(s_withAny | RecordFields::s_mask<Key::binary>, [] { return "'binary'"; });
        return std::make_unique<QueltBioBuffer>(readBinary(*binary));
    }
    if (const std::optional<Value> compiled = fields.find<Key::compiled>()) {
        fields.allowOnly(s_withAny | RecordFields::s_mask<Key::compiled>, [] { return "'compiled'"; });
        return std::make_unique<QueltBioBuffer>(compile(*compiled));
    }
    return nullptr;
}

QueltEeBasicEff& readBasicEffectivity(const Value& name, const ExpressionReader& reader) {
    QueltEeBasicEff* const basic = QueltEeBasicEff::cast(&reader.findEffectivity(name));
    if (basic == nullptr) {
        name.refuse(inQuotes(name.text()) + " is not a basic effectivity");
    }
    return *basic;
}

} // namespace

Record RecordReader::read(simdjson::dom::element root) const {
    const Value value(root, Place());
    const RecordFields fields(value);
    Record record;
    record.id = fields.need<Key::id>().text();
    record.binary = readBinaryBody(fields);
    if (record.binary != nullptr) {
        return record;
    }
    record.isBranched = fields.flag<Key::branch>() || m_branchesAll;
    if (record.isBranched) {
        record.effectivities = std::make_unique<WorkingEffectivities>();
    }
    const ExpressionReader expressionReader(m_context, record.effectivities.get());
    record.expression = readExpression(fields, expressionReader);
    record.isChange = fields.flag<Key::change>();
    if (const std::optional<Value> basicEff = fields.find<Key::basicEff>()) {
        record.basicEffectivity = &readBasicEffectivity(*basicEff, expressionReader);
    }
    return record;
}

std::optional<std::string_view> RecordReader::findId(simdjson::dom::element root) {
    simdjson::dom::object object;
    if (root.get_object().get(object) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    std::optional<std::string_view> id;
    std::size_t count = 0;
    for (const auto [key, value] : object) {
        std::string_view text;
        if (key != nameOf(Key::id)) {
            continue;
        }
        ++count;
        if (value.get_string().get(text) == simdjson::SUCCESS) {
            id = text;
        }
    }
    return count == 1 ? id : std::nullopt;
}

} // namespace quelt::host
