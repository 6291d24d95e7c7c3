// Uses everything that the module's headers offer, through the shared library: what is not exported does not
// link.

#include "QueltDataMigration.h"
#include "QueltEeGenExprToEeMMExprVisitor.h"
#include "QueltEeTarselMigrationServices.h"
#include "QueltReconstituteEffectivityFromCompiledBinary.h"

#include "compiled/QueltBioBuffer.h"
#include "expression/QueltEeExpressionContext.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInList.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInTraceSink.h"

#include <gtest/gtest.h>

namespace {

using Visitor = QueltEeGenExprToEeMMExprVisitor;

TEST(ExportedInterface, convertsAnExpression) {
    const QueltEeExpressionContext context;
    const QueltEeGenericExpression expression((new QueltEeTrue)->getNodeRef());
    QueltInMap* map = nullptr;
    ASSERT_EQ(
        QueltEeTarselMigrationServices::ConvertEeGenericExprToEeExpr(expression, context, 0, map, nullptr),
        S_OK);
    ASSERT_EQ(map->GetLength(), 1);
    EXPECT_NE(QueltEeEffectivityExpression::cast(map->Get(QueltInIntHolder(3))), nullptr)
        << "module and host agree on the classes of the core";
    EXPECT_EQ(QueltEeTarselMigrationServices::ConvertFromFlatSeriesExprToBranchingExpr(context, *map), 0);
    QueltInDeleteWithObjects(map);
}

TEST(ExportedInterface, offersTheVisitorWithItsPartInTheTypeRegistry) {
    const QueltEeExpressionContext context;
    Visitor visitor(0, context, nullptr);
    const Visitor copy(visitor);
    QueltInObject& object = visitor;
    const QueltInObject& constant = copy;
    EXPECT_EQ(object.dType(), Visitor::sType());
    EXPECT_NE(Visitor::isObjectOfThisType(object), 0);
    EXPECT_EQ(Visitor::cast(object), &visitor);
    EXPECT_EQ(Visitor::cast(constant), &copy);
    EXPECT_EQ(Visitor::cast(&object), &visitor);
    EXPECT_EQ(Visitor::cast(&constant), &copy);
    QueltEeFalse node;
    EXPECT_EQ(node.acceptVisitor(visitor), S_OK);
    QueltInMap* map = nullptr;
    EXPECT_EQ(visitor.generateMapDomainIDToEeExpr(map), S_OK);
    QueltInDeleteWithObjects(map);
}

TEST(ExportedInterface, readsCompiledBinariesIntoElements) {
    using Element = QueltReconstituteEffectivityFromCompiledBinary::OperationStackElement;
    QueltInList operations(Element::sType());
    QueltInList contexts(QueltInGuid::sType());
    const QueltInTraceCapture errors(QueltInTraceCapture::Wanted::unconditionalLines);
    EXPECT_EQ(QueltReconstituteEffectivityFromCompiledBinary::RetrieveChangeOperations(QueltBioBuffer(),
                                                                                       operations, contexts),
              E_INVALIDARG);

    Element element;
    Element copy(element);
    Element moved(std::move(copy));
    moved = element;
    moved = Element();
    QueltInObject& object = moved;
    const QueltInObject& constant = moved;
    EXPECT_EQ(object.dType(), Element::sType());
    EXPECT_NE(Element::isObjectOfThisType(object), 0);
    EXPECT_EQ(Element::cast(object), &moved);
    EXPECT_EQ(Element::cast(constant), &moved);
    EXPECT_EQ(Element::cast(&object), &moved);
    EXPECT_EQ(Element::cast(&constant), &moved);
    EXPECT_NE(operations.PutBack(object), 0);
}

TEST(ExportedInterface, hasItsMarkerAndTheServicesAssignment) {
    QueltDataMigration();
    QueltEeTarselMigrationServices services;
    const QueltEeTarselMigrationServices other;
    EXPECT_EQ(&(services = other), &services);
}

} // namespace
