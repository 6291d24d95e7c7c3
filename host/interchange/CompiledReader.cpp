#include "interchange/CompiledReader.h"

#include "compiled/QueltCompiledBinaryParser.h"
#include "compiled/QueltCompiledBinaryWriter.h"
#include "effectivity/QueltEeEffectivity.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "expression/QueltEeLeaves.h"
#include "interchange/AnswerWriter.h"
#include "interchange/Base64.h"
#include "interchange/Fields.h"

#include <map>
#include <vector>

namespace quelt::host {

namespace {

/// What a thing is called that there may be `limit` of, one of each.
struct Limited {
    const char* name;
    const char* plural;
    std::size_t limit;
};
constexpr Limited s_domain{"domain ", " domains", QueltFltEffectivity::s_maxDomains};
constexpr Limited s_view{"view ", " views", QueltFltDomainEffectivity::s_maxViews};
constexpr Limited s_context{"dictionary ", " contexts", QueltFltEffectivityView::s_maxContexts};

/// Hands `object`, which is known by what stands at `label`, over through `add`; refuses it there when that
/// does not take it.
template <class Object, class Add>
void handOver(std::unique_ptr<Object> object, const Value& label, const Limited& kind, std::string_view text,
              Add add) {
    const long result = add(object.get());
    if (result == E_ALREADYTHERE) {
        label.refuse(kind.name + std::string(text) + " given twice");
    }
    if (result < 0) {
        label.refuse("more than " + std::to_string(kind.limit) + kind.plural);
    }
    static_cast<void>(object.release());
}

/// Makes one effectivity.
class Spelling {
public:
    explicit Spelling(QueltFltEffectivity& effectivity) noexcept : m_effectivity(effectivity) {}

    void readDomains(const Value& value) {
        const Fields<Key::domains> fields(value);
        fields.need<Key::domains>().eachItem([this](const Value& item) { readDomain(item); });
    }

private:
    void readDomain(const Value& value) {
        const Fields<Key::domain, Key::views> fields(value);
        const Value label = fields.need<Key::domain>();
        const std::uint32_t number = label.uint32();
        auto domain = std::make_unique<QueltFltDomainEffectivity>();
        fields.need<Key::views>().eachItem([&](const Value& item) { readView(item, *domain); });
        handOver(std::move(domain), label, s_domain, std::to_string(number),
                 [&](QueltFltDomainEffectivity* object) { return m_effectivity.addDomain(number, object); });
    }

    void readView(const Value& value, QueltFltDomainEffectivity& domain) {
        const Fields<Key::view, Key::contexts> fields(value);
        const Value label = fields.need<Key::view>();
        const std::uint32_t kind = label.uint32();
        auto view = std::make_unique<QueltFltEffectivityView>();
        fields.need<Key::contexts>().eachItem([&](const Value& item) { readContext(item, *view); });
        handOver(std::move(view), label, s_view, std::to_string(kind), [&](QueltFltEffectivityView* object) {
            return domain.addView(QueltExpressionView{kind}, object);
        });
    }

    void readContext(const Value& value, QueltFltEffectivityView& view) {
        const Fields<Key::dictionary, Key::dnf> fields(value);
        const Value dictionary = fields.need<Key::dictionary>();
        const QueltInGuid guid = dictionary.guid();
        auto dnf = std::make_unique<QueltDnf>();
        fields.need<Key::dnf>().eachItem([&](const Value& item) { readConjunction(item, *dnf); });
        handOver(std::move(dnf), dictionary, s_context, inQuotes(dictionary.text()),
                 [&](QueltDnf* object) { return view.addContext(guid, object); });
    }

    void readConjunction(const Value& value, QueltDnf& dnf) {
        if (!value.isArray()) {
            value.refuseType("an array");
        }
        if (dnf.addConjunction() < 0) {
            value.refuse("more than " + std::to_string(QueltDnf::s_maxConjunctions) + " conjunctions");
        }
        value.eachItem([&](const Value& item) { readLiteral(item, dnf); });
    }

    void readLiteral(const Value& value, QueltDnf& dnf) {
        const Fields<Key::eff, Key::option, Key::in, Key::negated> fields(value);
        using Names = decltype(fields);
        std::unique_ptr<QueltEeNodeRef> literal;
        if (const std::optional<Value> change = fields.find<Key::eff>()) {
            fields.allowOnly(Names::template s_mask<Key::eff, Key::negated>, [] { return "'eff'"; });
            literal.reset((new QueltEeEffLeaf(&find(m_changes, change->guid()), nullptr))->getNodeRef());
        } else if (const std::optional<Value> option = fields.find<Key::option>()) {
            auto criterion = readOption(option->guid(), fields.need<Key::in>());
            literal.reset((new QueltEeVarEffLeaf(criterion.release()))->getNodeRef());
        } else {
            value.refuse("expected 'eff' or 'option'");
        }
        if (fields.flag<Key::negated>()) {
            static_cast<QueltEeNodeElementaryLeaf*>(literal->getNode())->opNot();
        }
        if (dnf.addLiteral(literal.get()) < 0) {
            value.refuse("more literals than a normal form may have, or more values in them");
        }
        static_cast<void>(literal.release());
    }

    std::unique_ptr<QueltEeOptionEff> readOption(const QueltInGuid& guid, const Value& values) {
        QueltEeCatOptionVar& option = find(m_options, guid);
        auto criterion = std::make_unique<QueltEeOptionEff>(&option);
        values.eachItem(
            [&](const Value& name) { static_cast<void>(criterion->addValue(option.addValue(name.text()))); });
        return criterion;
    }

    template <class T>
    using ByGuid = std::map<QueltInGuid, T*>;

    /// The object that stands for the GUID, which the effectivity owns; it is named by it.
    template <class T>
    T& find(ByGuid<T>& known, const QueltInGuid& guid) {
        const auto [place, isNew] = known.try_emplace(guid, nullptr);
        if (isNew) {
            auto made = std::make_unique<T>(guid.toString(), guid);
            place->second = made.get();
            m_effectivity.adopt(std::move(made));
        }
        return *place->second;
    }

    QueltFltEffectivity& m_effectivity;
    ByGuid<QueltEePredefEff> m_changes;
    ByGuid<QueltEeCatOptionVar> m_options;
};

std::string_view describeParserResult(long result) noexcept {
    switch (result) {
    case E_INVALIDARG:
        return "no compiled binary, or a damaged one";
    case E_NOTIMPL:
        return "compiled in a version of the format that is not known";
    case E_OUTOFMEMORY:
        return "larger than a compiled binary may be";
    default:
        return "cannot be read";
    }
}

} // namespace

QueltBioBuffer readBinary(const Value& value) {
    std::vector<std::uint8_t> bytes;
    if (const std::optional<std::string> fault = decodeBase64(value.text(), bytes)) {
        value.refuse("not base64: " + *fault);
    }
    return QueltBioBuffer(bytes);
}

std::unique_ptr<QueltFltEffectivity> readCompiled(const Value& value) {
    auto effectivity = std::make_unique<QueltFltEffectivity>();
    Spelling(*effectivity).readDomains(value);
    return effectivity;
}

QueltBioBuffer compile(const Value& value) {
    const std::unique_ptr<QueltFltEffectivity> effectivity = readCompiled(value);
    QueltBioBuffer binary;
    if (const long result = QueltCompiledBinaryWriter::Write(*effectivity, binary); result < 0) {
        value.refuse(result == E_OUTOFMEMORY ? "larger than a compiled binary may be"
                                             : "cannot be compiled: " + formatCode(result));
    }
    return binary;
}

std::unique_ptr<QueltFltEffectivity> decompile(QueltBioBuffer binary, const Value& value) {
    QueltInObject* object = nullptr;
    if (const long result = QueltCompiledBinaryParser::Read(binary, object); result < 0) {
        value.refuse(std::string(describeParserResult(result)) + " (" + formatCode(result) + ")");
    }
    std::unique_ptr<QueltInObject> read(object);
    QueltFltEffectivity* const effectivity = QueltFltEffectivity::cast(object);
    if (effectivity == nullptr) {
        value.refuse("no compiled effectivity");
    }
    static_cast<void>(read.release());
    return std::unique_ptr<QueltFltEffectivity>(effectivity);
}

} // namespace quelt::host
