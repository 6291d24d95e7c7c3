#include "QueltEeTarselMigrationServices.h"

#include "ConfigurationFlag.h"
#include "FilterGenerator.h"
#include "MigrationTrace.h"
#include "ObtainedMapPrinter.h"
#include "QueltEeGenExprToEeMMExprVisitor.h"
#include "QueltMigTransformSerialToTreeSeriesVisitor.h"

#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeNode.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInMap.h"

namespace {

const quelt::MigrationTrace s_trace("QueltEeTarselMigrationServices");
const bool s_isRenumbering = quelt::isEnvironmentVariableSet("CGE_MigRen");

QueltInMap* makeOutputMap(QueltInObjectTypeClass* expressionType) {
    return new QueltInMap(QueltInIntHolder::sType(), expressionType, 3, 0.0F);
}

QueltEeNode* findRootNode(const QueltEeGenericExpression& genericExpr) {
    const QueltEeNodeRef* const root = genericExpr.GetNodeRef();
    return root != nullptr ? root->getNode() : nullptr;
}

long convertTree(const QueltEeGenericExpression& genericExpr, const QueltEeExpressionContext& context,
                 unsigned char change, QueltInMap*& outputMap, QueltEeBasicEff* basicEff) {
    QueltEeGenExprToEeMMExprVisitor visitor(change, context, basicEff);
    QueltEeNode* const root = findRootNode(genericExpr);
    if (root == nullptr) {
        return s_trace.fail("ERROR : unexpected");
    }
    s_trace.inform("Visiting GenericExpression NodeRef with visitor QueltEeGenExprToEeMMExprVisitor");
    long result = root->acceptVisitor(visitor);
    if (result < 0) {
        return s_trace.fail("ERROR : acceptVisitor Failed", result);
    }
    s_trace.inform("End visiting with QueltEeGenExprToEeMMExprVisitor, get output map :");
    result = visitor.generateMapDomainIDToEeExpr(outputMap);
    if (result < 0) {
        return s_trace.fail("ERROR : generateMapDomainIDToEeExpr failed.", result);
    }
    if (!s_trace.isActivated()) {
        return result;
    }
    const long printed = quelt::printObtainedMap(s_trace, *outputMap);
    return printed < 0 ? printed : result;
}

/// Only a filter shows criteria that can be stored back; what other expressions hold changes in its place.
long run(QueltEeNodeVisitor& visitor, QueltEeExpression& expression) {
    QueltEeFilterExpression* const filter = QueltEeFilterExpression::cast(&expression);
    return filter != nullptr ? filter->runVisitor(visitor) : expression.runConstVisitor(visitor);
}

/// The entries of a map and not its values are counted, for a value may be null where a core has failed.
long runOnValues(QueltEeNodeVisitor& visitor, const QueltInMap& map) {
    auto values = map.cBegin();
    while (values.IsEnd() == 0) {
        QueltEeExpression* const expression = QueltEeExpression::cast(values.GetValGoToNext());
        if (expression == nullptr) {
            return s_trace.fail("ERROR : unexpected");
        }
        const long result = run(visitor, *expression);
        if (result < 0) {
            return s_trace.fail("ERROR : run visitor QueltMigTransformSerialToTreeSeriesVisitor failed",
                                result);
        }
    }
    return S_OK;
}

} // namespace

QueltEeTarselMigrationServices&
QueltEeTarselMigrationServices::operator=(const QueltEeTarselMigrationServices& /*other*/) = default;

long QueltEeTarselMigrationServices::ConvertEeGenericExprToEeExpr(const QueltEeGenericExpression& genericExpr,
                                                                  const QueltEeExpressionContext& context,
                                                                  unsigned char change,
                                                                  QueltInMap*& outputMap,
                                                                  QueltEeBasicEff* basicEff) {
    const quelt::MethodTrace scope(s_trace, "ConvertEeGenericExprToEeExpr");
    if (genericExpr.IsList() != 0) {
        s_trace.inform("This is a filter => generating filter : ");
        outputMap = makeOutputMap(QueltEeFilterExpression::sType());
        return quelt::FilterGenerator(s_trace, s_isRenumbering, genericExpr, context).run(*outputMap);
    }
    if (change != 0) {
        s_trace.inform("This is a change => generating change : ");
        outputMap = makeOutputMap(QueltEeChangeExpression::sType());
    } else {
        s_trace.inform("This is an effectivity => generating effectivity : ");
        outputMap = makeOutputMap(QueltEeEffectivityExpression::sType());
    }
    return convertTree(genericExpr, context, change, outputMap, basicEff);
}

long QueltEeTarselMigrationServices::ConvertFromFlatSeriesExprToBranchingExpr(
    const QueltEeExpressionContext& context, QueltInMap& expressions) {
    // The lines of the service bear this name in every log that there is.
    const quelt::MethodTrace scope(s_trace, "CreateFlatSeriesContextFromTreeSeriesContext");
    QueltMigTransformSerialToTreeSeriesVisitor visitor(context);
    const long result = runOnValues(visitor, expressions);
    if (result < 0) {
        return result;
    }
    return visitor.singleSelectionMade() != 0 ? 1 : 0;
}
