#pragma once

#include "effectivity/QueltEeVarEff.h"
#include "interchange/LoadedContext.h"
#include "interchange/NodeFields.h"

#include <memory>

namespace quelt::host {

/// Makes variable effectivities from criteria. They are made in the memory that is current on the thread.
class CriterionReader {
public:
    /// Names are looked up in `context`, which must outlive the reader.
    explicit CriterionReader(const LoadedContext& context) noexcept : m_context(context) {}

    /// The effectivity that the fields of a criterion of this form describe.
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> read(Key form, const NodeFields& fields) const;

private:
    /// The variable that the criterion is on; null when it names none.
    [[nodiscard]] const Feature* findFeature(Key form, const NodeFields& fields) const;
    template <class Variable>
    [[nodiscard]] const Variable* findVariable(Key form, const NodeFields& fields) const;
    [[nodiscard]] const Feature& lookUp(const Value& name, const NodeFields& fields) const;

    template <class Effectivity, class Variable>
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> readNamedValues(Key form, const NodeFields& fields) const;
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> readSerial(const NodeFields& fields) const;
    [[nodiscard]] std::unique_ptr<QueltEeVarEff> readTreeSeries(const NodeFields& fields) const;
    [[nodiscard]] static std::unique_ptr<QueltEeVarEff> readDate(const NodeFields& fields);

    const LoadedContext& m_context;
};

} // namespace quelt::host
