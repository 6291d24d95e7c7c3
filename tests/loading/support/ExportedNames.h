#pragma once

// What the libraries export, as a host that links neither asks for it by name. The names are the same with
// every compiler that mangles as the C++ ABI of Linux and MinGW says: no type in them differs in size or
// spelling between the platforms.

class QueltBioBuffer;
class QueltEeBasicEff;
class QueltEeExpressionContext;
class QueltEeGenericExpression;
class QueltInList;
class QueltInMap;
class QueltInObjectTypeClass;
class QueltInTraceClass;

namespace quelt::test {

using Marker = void();
constexpr const char* s_marker = "QueltDataMigration";

using Convert = long(const QueltEeGenericExpression& genericExpr, const QueltEeExpressionContext& context,
                     unsigned char change, QueltInMap*& outputMap, QueltEeBasicEff* basicEff);
constexpr const char* s_convert = "_ZN30QueltEeTarselMigrationServices28ConvertEeGenericExprToEeExprERK24"
                                  "QueltEeGenericExpressionRK24QueltEeExpressionContexthRP10QueltInMapP15"
                                  "QueltEeBasicEff";

using Branch = long(const QueltEeExpressionContext& context, QueltInMap& expressions);
constexpr const char* s_branch = "_ZN30QueltEeTarselMigrationServices40"
                                 "ConvertFromFlatSeriesExprToBranchingExprERK24QueltEeExpressionContextR10"
                                 "QueltInMap";

using Retrieve = long(const QueltBioBuffer& compiledBinary, QueltInList& operations,
                      QueltInList& contextGuids);
constexpr const char* s_retrieve = "_ZN46QueltReconstituteEffectivityFromCompiledBinary24"
                                   "RetrieveChangeOperationsERK14QueltBioBufferR11QueltInListS4_";

using TypeOf = QueltInObjectTypeClass*();
constexpr const char* s_typeOfVisitor =
    "_ZN12QueltInTypedI31QueltEeGenExprToEeMMExprVisitor18QueltEeNodeVisitorE5sTypeEv";
constexpr const char* s_typeOfElement =
    "_ZN12QueltInTypedIN46QueltReconstituteEffectivityFromCompiledBinary21"
    "OperationStackElementE13QueltInObjectE5sTypeEv";

using MakeTrace = void(void* place, const char* className, const char* domainName);
constexpr const char* s_makeTrace = "_ZN17QueltInTraceClassC1EPKcS1_";
using SetMethod = void(QueltInTraceClass* trace, const char* name);
constexpr const char* s_setMethod = "_ZN17QueltInTraceClass9SetMethodEPKc";
using RemoveMethod = void(QueltInTraceClass* trace);
constexpr const char* s_removeMethod = "_ZN17QueltInTraceClass12RemoveMethodEv";
using BeginTrace = QueltInTraceClass&(QueltInTraceClass* trace, int level);
constexpr const char* s_beginTrace = "_ZN17QueltInTraceClass10beginTraceEi";
using Append = QueltInTraceClass&(QueltInTraceClass* trace, const char* text);
constexpr const char* s_append = "_ZN17QueltInTraceClasslsEPKc";
using EndTrace = void(QueltInTraceClass* trace, int level);
constexpr const char* s_endTrace = "_ZN17QueltInTraceClass8endTraceEi";

} // namespace quelt::test
