#pragma once

#include "expression/QueltEeExpressionContext.h"
#include "expression/QueltEeNode.h"

#include <memory>

class QueltBioBuffer;
class QueltDnf;

namespace quelt {

/// The way to those operations of the core that are called by the name of their class, not through an object
/// that could be another one. A test that needs them to fail, as the core itself never does, stands in for
/// this class; the module makes nothing but this class.
class CompiledBinaryCore {
public:
    CompiledBinaryCore() = default;
    virtual ~CompiledBinaryCore() = default;
    CompiledBinaryCore(const CompiledBinaryCore&) = delete;
    CompiledBinaryCore& operator=(const CompiledBinaryCore&) = delete;

    /// QueltCompiledBinaryParser::Read.
    [[nodiscard]] virtual long read(QueltBioBuffer& buffer, QueltInObject*& object) const;
    /// QueltConversionServices::ConvertGuidToString.
    [[nodiscard]] virtual long convertGuidToString(const QueltInGuid& guid, QueltInString& text) const;
    /// An empty context.
    [[nodiscard]] virtual std::unique_ptr<QueltEeExpressionContext> makeContext() const;
    /// QueltEeDnfConvertor::Dnf2NodeRef without a modeler; the caller owns the reference.
    [[nodiscard]] virtual QueltEeNodeRef* dnf2NodeRef(const QueltDnf& dnf, QueltEeModelDico& dictionary,
                                                      QueltEeExpressionContext& context) const;
};

} // namespace quelt
