#include "host/support/StructureDump.h"

#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeTreeSeriesEff.h"
#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeOperators.h"

namespace quelt::host::test {

namespace {

/// Gathers the text; every name stands with its length, so that no two structures read the same.
class Dump {
public:
    Dump& operator<<(const char* text) {
        m_text += text;
        return *this;
    }
    Dump& operator<<(std::int64_t number) {
        m_text += std::to_string(number) + ",";
        return *this;
    }
    Dump& name(std::string_view name) {
        *this << static_cast<std::int64_t>(name.size());
        m_text += name;
        return *this;
    }
    Dump& object(const QueltEeDicoObject* object) {
        if (object == nullptr) {
            return *this << "null";
        }
        return (*this << object->dType()->getName()).name(object->getName().view())
               << " " << object->getGuid().toString().ConvertToChar();
    }
    [[nodiscard]] const std::string& text() const { return m_text; }

private:
    std::string m_text;
};

void dumpVariable(Dump& out, const QueltEeDicoObject* variable) {
    out.object(variable) << " of ";
    const auto* const feature = QueltEeVariable::cast(variable);
    out.object(feature != nullptr ? feature->getHolderDico() : nullptr);
}

void dumpBound(Dump& out, const QueltEeTreeSeriesSelection::Bound& bound) {
    out << static_cast<std::int64_t>(bound.element->getSeqNumber()) << (bound.included ? "in " : "ex ");
}

void dumpEffectivity(Dump& out, const QueltEeVarEff& effectivity) {
    out << effectivity.dType()->getName() << (effectivity.isNegated() != 0 ? " negated" : "")
        << (effectivity.getNoVar() != 0 ? " noVar " : " ");
    dumpVariable(out, effectivity.getVar());
    if (const auto* const named = QueltEeNamedValueEff::cast(&effectivity)) {
        for (const std::uint32_t number : named->getValues()) {
            out.name(QueltEeNamedValueVar::cast(named->getVar())->getValueName(number));
        }
    } else if (const auto* const serial = QueltEeSerialEff::cast(&effectivity)) {
        for (const auto& interval : serial->intervals()) {
            out << interval.a << interval.b << interval.aIncl << interval.bIncl << ";";
        }
    } else if (const auto* const tree = QueltEeTreeSeriesEff::cast(&effectivity)) {
        for (const QueltEeTreeSeriesSelection& selection : tree->getSelections()) {
            if (selection.getSingle()) {
                dumpBound(out << "single ", *selection.getSingle());
            }
            if (selection.getFrom()) {
                dumpBound(out << "from ", *selection.getFrom());
            }
            for (const auto& bound : selection.getTo()) {
                dumpBound(out << "to ", bound);
            }
            out << ";";
        }
    } else if (const auto* const date = QueltEeDateEff::cast(&effectivity)) {
        for (const auto& interval : date->intervals()) {
            out << interval.from << interval.to << ";";
        }
    }
}

void dumpNode(Dump& out, const QueltEeNodeRef* reference) {
    const QueltEeNode* const node = reference != nullptr ? reference->getNode() : nullptr;
    if (node == nullptr) {
        out << "null";
        return;
    }
    out << node->dType()->getName() << "(";
    if (const auto* const group = QueltEeGroupOp::cast(node)) {
        for (const QueltInObject* const child : group->getChildren().elements()) {
            dumpNode(out, QueltEeNodeRef::cast(child));
        }
    } else if (const auto* const single = QueltEeSingleOp::cast(node)) {
        dumpNode(out, single->getChildRef());
    } else if (const auto* const leaf = QueltEeVarEffLeaf::cast(node)) {
        if (leaf->getVarEff() != nullptr) {
            dumpEffectivity(out, *leaf->getVarEff());
        }
    } else if (const auto* const effectivity = QueltEeEffLeaf::cast(node)) {
        out.object(effectivity->getTargetEff()).object(effectivity->getReferencedContext());
        out << (effectivity->isNegated() != 0 ? " negated" : "");
    } else if (const auto* const restriction = QueltEeRestrictionEffLeaf::cast(node)) {
        out.name(restriction->getText().view());
    }
    out << ")";
}

void dumpList(Dump& out, const QueltQmSpecList* list) {
    if (list == nullptr) {
        out << "no list";
        return;
    }
    QueltInMap::const_iterator criteria = list->getVarEffs().cBegin();
    while (const QueltInObject* const object = criteria.GetValGoToNext()) {
        dumpEffectivity(out << "\n  ", *QueltEeVarEff::cast(object));
    }
    QueltInSet::const_iterator named = list->getNamedEffectivities().cBegin();
    while (const QueltInObject* const object = named.GetGoToNext()) {
        (out << "\n  ").object(QueltEeEffectivity::cast(object));
    }
}

void dumpMultiModel(Dump& out, const QueltEeMultiModelExpression& expression) {
    dumpNode(out << " global ", expression.getGlobalCriteria());
    for (const auto& filed : expression.getModelCriteria()) {
        (out << "\n  ").object(filed.dictionary) << " inherited ";
        dumpNode(out, filed.criteria->getInherited());
        dumpNode(out << " own ", filed.criteria->getOwn());
    }
    if (const auto* const effectivity = QueltEeEffectivityExpression::cast(&expression)) {
        for (const QueltEeExpressionOperation* const operation : effectivity->getOperations()) {
            out << "\n  operation " << static_cast<std::int64_t>(operation->m_kind);
            out.object(QueltEeEffectivity::cast(operation->getObject()));
        }
    }
}

void dumpExpression(Dump& out, const QueltEeExpression* expression) {
    if (expression == nullptr) {
        out << "no expression\n";
        return;
    }
    out << expression->dType()->getName() << " ";
    if (const auto* const generic = QueltEeGenericExpression::cast(expression)) {
        const QueltQmSpecList* list = nullptr;
        auto mode = QueltEeGenericExpression::ListMode::all;
        if (generic->IsList() != 0) {
            generic->GetList(list);
            generic->GetMode(mode);
            dumpList(out << "mode " << static_cast<std::int64_t>(mode), list);
        } else {
            dumpNode(out << "tree ", generic->GetNodeRef());
        }
    } else if (const auto* const filter = QueltEeFilterExpression::cast(expression)) {
        (out << "mode " << filter->getListMode()).object(filter->getDictionary());
        dumpList(out, filter->getSpecList());
    } else {
        dumpMultiModel(out, *QueltEeMultiModelExpression::cast(expression));
    }
    out << "\n";
}

void dumpDefinition(Dump& out, const QueltEeVariable& variable) {
    dumpVariable(out << " ", &variable);
    if (const auto* const named = QueltEeNamedValueVar::cast(&variable)) {
        for (std::uint32_t number = 0; number < named->getValueCount(); ++number) {
            out.name(named->getValueName(number));
        }
    } else if (const auto* const serial = QueltEeSerialVar::cast(&variable)) {
        out << static_cast<std::int64_t>(serial->getExternalType());
        const QueltInMap* revisions = nullptr;
        out << (serial->getSeqNb2Revisions(revisions) < 0 ? " no table" : " table ");
        if (revisions != nullptr) {
            QueltInMap::const_iterator iterator = revisions->cBegin();
            while (const QueltInObject* const object = iterator.GetValGoToNext()) {
                const auto& revision = *QueltEeSerialVarValue::cast(object);
                out.name(revision.getRev().view()) << static_cast<std::int64_t>(revision.getSeqNumber());
            }
        }
    } else if (const auto* const tree = QueltEeTreeSeriesVar::cast(&variable)) {
        out << static_cast<std::int64_t>(tree->getNumber());
        for (const auto& element : tree->getElements()) {
            out << static_cast<std::int64_t>(element->getSeqNumber()) << "below ";
            out << (element->getParent() != nullptr
                        ? static_cast<std::int64_t>(element->getParent()->getSeqNumber())
                        : -1);
        }
    }
    out << "\n";
}

} // namespace

std::string dump(const QueltEeExpression& expression) {
    Dump out;
    dumpExpression(out, &expression);
    return out.text();
}

std::string dump(const LoadedContext& context) {
    Dump out;
    for (const QueltEeModelDico* const dictionary : context.dictionaries()) {
        out.object(dictionary) << "\n";
        for (const auto& variable : dictionary->getVariables()) {
            dumpDefinition(out, *variable);
        }
    }
    for (const QueltEeVariable* const variable : context.topVariables()) {
        dumpDefinition(out, *variable);
    }
    for (const QueltEeEffectivity* const effectivity : context.effectivities()) {
        out.object(effectivity) << " ";
        QueltEeExpression* expression = nullptr;
        effectivity->getExpr(expression);
        dumpExpression(out, expression);
        if (const auto* const basic = QueltEeBasicEff::cast(effectivity)) {
            const QueltInMap* dictionaries = nullptr;
            context.expressionContext().GetAllDictionariesForInheritedEffectivity(*basic, dictionaries);
            QueltInMap::const_iterator iterator = dictionaries->cBegin();
            while (const QueltInObject* const object = iterator.GetValGoToNext()) {
                (out << " inherited in ").object(QueltEeModelDico::cast(object));
            }
        }
    }
    return out.text();
}

} // namespace quelt::host::test
