#include "CompiledBinaryCore.h"

#include "compiled/QueltCompiledBinaryParser.h"
#include "compiled/QueltEeDnfConvertor.h"
#include "infrastructure/QueltConversionServices.h"

namespace quelt {

long CompiledBinaryCore::read(QueltBioBuffer& buffer, QueltInObject*& object) const {
    return QueltCompiledBinaryParser::Read(buffer, object);
}

long CompiledBinaryCore::convertGuidToString(const QueltInGuid& guid, QueltInString& text) const {
    return QueltConversionServices::ConvertGuidToString(guid, text);
}

std::unique_ptr<QueltEeExpressionContext> CompiledBinaryCore::makeContext() const {
    return std::make_unique<QueltEeExpressionContext>();
}

QueltEeNodeRef* CompiledBinaryCore::dnf2NodeRef(const QueltDnf& dnf, QueltEeModelDico& dictionary,
                                                QueltEeExpressionContext& context) const {
    return QueltEeDnfConvertor::Dnf2NodeRef(dnf, dictionary, context, nullptr);
}

} // namespace quelt
