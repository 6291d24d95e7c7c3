#include "QueltEeTarselMigrationServices.h"

#include "QueltDataMigration.h"

#include "module/support/Captured.h"
#include "module/support/Garage.h"

#include "effectivity/QueltEeNamedValueEff.h"
#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeNodeVisitor.h"
#include "expression/QueltEeOperators.h"
#include "expression/QueltQmSpecList.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInMap.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

using quelt::test::CapturedErrors;
using quelt::test::CapturedTrace;
using quelt::test::Garage;
using Messages = std::vector<std::string>;
using Services = QueltEeTarselMigrationServices;

class MigrationServices : public testing::Test {
protected:
    ~MigrationServices() override { QueltInDeleteWithObjects(map); }

    Garage<> garage;
    QueltInMap* map = nullptr;
};

TEST_F(MigrationServices, makesAMapOfTheKindOfTheOutcome) {
    const QueltEeGenericExpression list(new QueltQmSpecList, QueltEeGenericExpression::ListMode::all);
    const QueltEeGenericExpression tree((new QueltEeTrue)->getNodeRef());
    struct Row {
        const QueltEeGenericExpression& expression;
        unsigned char change;
        QueltInObjectTypeClass* type;
    };
    const Row rows[] = {{list, 0, QueltEeFilterExpression::sType()},
                        {list, 1, QueltEeFilterExpression::sType()},
                        {tree, 0, QueltEeEffectivityExpression::sType()},
                        {tree, 1, QueltEeChangeExpression::sType()},
                        {tree, 255, QueltEeChangeExpression::sType()}};
    for (const Row& row : rows) {
        QueltInMap* output = nullptr;
        EXPECT_EQ(Services::ConvertEeGenericExprToEeExpr(row.expression, garage.context, row.change, output,
                                                         nullptr),
                  S_OK);
        EXPECT_EQ(output->getKeyType(), QueltInIntHolder::sType());
        EXPECT_EQ(output->getValueType(), row.type);
        QueltInDeleteWithObjects(output);
    }
}

TEST_F(MigrationServices, overwritesThePointerAndNeverReadsIt) {
    auto* const before = reinterpret_cast<QueltInMap*>(std::uintptr_t{16}); // would crash when touched
    map = before;
    const QueltEeGenericExpression neither;
    const CapturedErrors captured;
    EXPECT_EQ(Services::ConvertEeGenericExprToEeExpr(neither, garage.context, 0, map, nullptr), E_FAIL);
    ASSERT_NE(map, before);
    EXPECT_EQ(map->GetLength(), 0);
    EXPECT_EQ(captured.texts(), Messages{"ERROR : unexpected"});
}

TEST_F(MigrationServices, refusesARootWithoutNode) {
    auto* const root = new QueltEeNodeRef;
    const QueltEeGenericExpression expression(root);
    const CapturedErrors captured;
    EXPECT_EQ(Services::ConvertEeGenericExprToEeExpr(expression, garage.context, 0, map, nullptr), E_FAIL);
    EXPECT_EQ(captured.texts(), Messages{"ERROR : unexpected"});
    if (expression.GetNodeRef() != root) {
        delete root;
    }
}

/// A root that is visited without effect.
class SilentTrue : public QueltEeTrue {
public:
    long acceptVisitor(QueltEeNodeVisitor& /*visitor*/) override { return S_OK; }
};

TEST_F(MigrationServices, passesTheVisitorsFailureUp) {
    const QueltEeGenericExpression expression((new QueltEeNotDomainOp)->getNodeRef());
    const CapturedErrors captured;
    EXPECT_EQ(Services::ConvertEeGenericExprToEeExpr(expression, garage.context, 0, map, nullptr), E_NOTIMPL);
    EXPECT_EQ(captured.texts(), Messages{"ERROR : acceptVisitor Failed"});
}

TEST_F(MigrationServices, reportsAWalkThatGeneratedNothing) {
    const QueltEeGenericExpression expression((new SilentTrue)->getNodeRef());
    const CapturedErrors captured;
    EXPECT_EQ(Services::ConvertEeGenericExprToEeExpr(expression, garage.context, 0, map, nullptr), E_FAIL);
    EXPECT_EQ(captured.texts(), (Messages{"ERROR : no effectivity expression generated",
                                          "ERROR : generateMapDomainIDToEeExpr failed."}));
}

/// Leaves a map behind in which something stands that no map of the service would hold.
class TrueThatFilesAForeignValue : public QueltEeTrue {
public:
    TrueThatFilesAForeignValue(QueltInMap*& output, const QueltInObject& foreign)
        : m_output(output), m_foreign(foreign) {}
    long acceptVisitor(QueltEeNodeVisitor& visitor) override {
        delete m_output;
        m_output = new QueltInMap(QueltInIntHolder::sType(), QueltInObject::sType());
        m_output->Put(QueltInIntHolder(9), m_foreign);
        return QueltEeTrue::acceptVisitor(visitor);
    }

private:
    QueltInMap*& m_output;
    const QueltInObject& m_foreign;
};

TEST_F(MigrationServices, failsWhenATracedMapCannotBePrinted) {
    const auto convert = [this] {
        auto* const foreign = new QueltEeGenericExpression;
        const QueltEeGenericExpression expression(
            (new TrueThatFilesAForeignValue(map, *foreign))->getNodeRef());
        return Services::ConvertEeGenericExprToEeExpr(expression, garage.context, 0, map, nullptr);
    };
    {
        const CapturedErrors captured;
        EXPECT_EQ(convert(), S_OK) << "without trace nothing is printed";
        EXPECT_TRUE(captured.texts().empty());
        QueltInDeleteWithObjects(std::exchange(map, nullptr));
    }
    const CapturedTrace captured;
    EXPECT_EQ(convert(), E_FAIL);
    EXPECT_EQ(map->GetLength(), 2) << "the map is complete all the same";
    const Messages texts = captured.texts();
    EXPECT_EQ(Messages(texts.end() - 7, texts.end()),
              (Messages{"Obtained map : ", "Domain ID : 9", "MultiModelExpression : ", "ERROR : error",
                        "> ~QueltEeGenExprToEeMMExprVisitor", "< ~QueltEeGenExprToEeMMExprVisitor",
                        "< ConvertEeGenericExprToEeExpr"}));
}

TEST_F(MigrationServices, namesItsSourceFileInErrorReports) {
    const QueltEeGenericExpression neither;
    const CapturedErrors captured;
    EXPECT_EQ(Services::ConvertEeGenericExprToEeExpr(neither, garage.context, 0, map, nullptr), E_FAIL);
    const std::string_view location = captured.lines().front().text;
    EXPECT_TRUE(location.starts_with("[ERROR] QueltDataMigration.m/src/QueltEeTarselMigrationServices.cpp("))
        << location;
    EXPECT_EQ(captured.lines().back().text, "        ERROR : unexpected");
}

TEST_F(MigrationServices, assignmentReturnsTheObject) {
    Services services;
    const Services other;
    EXPECT_EQ(&(services = other), &services);
}

TEST(DataMigration, hasAMarkerThatDoesNothing) {
    QueltDataMigration();
}

TEST(MigrationServicesConcurrency, threadsShareAContext) {
    const Garage<> garage;
    const auto work = [&garage] {
        for (int i = 0; i < 200; ++i) {
            const CapturedTrace captured;
            auto* const list = new QueltQmSpecList;
            QueltEeVarEff* option = new QueltEeOptionEff(garage.engine);
            list->addVarEff(option);
            const QueltEeGenericExpression expression(list, QueltEeGenericExpression::ListMode::all);
            QueltInMap* output = nullptr;
            EXPECT_EQ(Services::ConvertEeGenericExprToEeExpr(expression, garage.context, 0, output, nullptr),
                      S_OK);
            EXPECT_EQ(captured.texts(),
                      (Messages{"> ConvertEeGenericExprToEeExpr", "This is a filter => generating filter : ",
                                "There is at least one evolution/variant criteria",
                                "< ConvertEeGenericExprToEeExpr"}));
            QueltInDeleteWithObjects(output);
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back(work);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace
