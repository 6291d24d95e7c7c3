#include "FilterGenerator.h"

#include "module/support/Captured.h"
#include "module/support/ConversionDoubles.h"
#include "module/support/Garage.h"

#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeTreeSeriesEff.h"
#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltQmSpecList.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInMemory.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// What the core never does by itself, but a failing one would: each double fails in one place. Failures leave
// what was built to nobody, so these conversions run in an arena.

namespace {

using quelt::test::CapturedErrors;
using quelt::test::ContextDouble;
using quelt::test::Garage;
using quelt::test::guidOf;
using quelt::test::OnVariable;
using quelt::test::s_coreFailure;
using quelt::test::SetWith;
using quelt::test::SixthEff;
using Messages = std::vector<std::string>;
using Mode = QueltEeGenericExpression::ListMode;

const quelt::MigrationTrace s_trace("FilterGeneratorTest");

class GenericExpressionDouble : public QueltEeGenericExpression {
public:
    explicit GenericExpressionDouble(QueltQmSpecList* list) : QueltEeGenericExpression(list, Mode::all) {}
    long GetList(const QueltQmSpecList*& list) const override {
        const long result = QueltEeGenericExpression::GetList(list);
        return m_listResult < 0 ? m_listResult : result;
    }
    long GetMode(Mode& mode) const override {
        const long result = QueltEeGenericExpression::GetMode(mode);
        return m_modeResult < 0 ? m_modeResult : result;
    }
    long m_listResult = S_OK;
    long m_modeResult = S_OK;
};

class ListDouble : public QueltQmSpecList {
public:
    ListDouble(std::initializer_list<QueltInObject*> named) : m_namedDouble(named) {}
    [[nodiscard]] const QueltInSet& getNamedEffectivities() const override { return m_namedDouble; }
    [[nodiscard]] QueltInSet& getNamedEffectivities() override { return m_namedDouble; }

private:
    SetWith m_namedDouble;
};

template <class Base>
class UncloneableEff : public Base {
public:
    using Base::Base;
    [[nodiscard]] QueltEeVarEff* createVarEffClone() const override { return nullptr; }
};

class EffectivityDouble : public QueltEePredefEff {
public:
    using QueltEePredefEff::QueltEePredefEff;
    long getExpr(QueltEeExpression*& /*expression*/) const override { return s_coreFailure; }
};

class ApplicabilityDouble : public QueltEeChangeExpression {
public:
    long getContextDictionaries(QueltInSet& /*dictionaries*/) const override { return s_coreFailure; }
};

class FilterGeneratorFailures : public testing::Test {
protected:
    ~FilterGeneratorFailures() override { delete m_pList; }

    void add(QueltEeVarEff* criterion) { m_pList->addVarEff(criterion); }
    /// Gives a change, which outlives the arena, an expression.
    template <class Expression>
    static void setExpression(QueltEePredefEff& change) {
        const QueltInHeapScope heap;
        QueltEeExpression* expression = new Expression;
        change.setExpr(expression);
    }
    QueltEeVarEff* engineOption() const { return new QueltEeOptionEff(garage.engine); }

    /// Runs the generator over the list so far; the result, and the errors in m_errors.
    long run(long modeResult = S_OK, long listResult = S_OK) {
        GenericExpressionDouble expression(std::exchange(m_pList, nullptr));
        expression.m_modeResult = modeResult;
        expression.m_listResult = listResult;
        QueltInMap output(QueltInIntHolder::sType(), m_pOutputType);
        const CapturedErrors captured;
        const long result = quelt::FilterGenerator(s_trace, false, expression, garage.context).run(output);
        m_errors = captured.texts();
        m_filed = output.GetLength();
        EXPECT_EQ(garage.context.m_pInheritedSeen, nullptr);
        return result;
    }

    Garage<ContextDouble> garage;
    QueltInArena m_arena;
    QueltInArenaScope m_scope{m_arena};
    QueltQmSpecList* m_pList = new QueltQmSpecList;
    QueltInObjectTypeClass* m_pOutputType = QueltEeFilterExpression::sType();
    Messages m_errors;
    int m_filed = 0;
};

TEST_F(FilterGeneratorFailures, listThatCannotBeRead) {
    EXPECT_EQ(run(S_OK, s_coreFailure), s_coreFailure);
    EXPECT_EQ(m_errors, Messages{"ERROR : getList on EeGenericExpression FAILED."});
}

TEST_F(FilterGeneratorFailures, nullList) {
    delete std::exchange(m_pList, nullptr);
    EXPECT_EQ(run(), E_FAIL);
    EXPECT_EQ(m_errors, Messages{"ERROR : list is null, cannot work out anything. Sorry."});
}

TEST_F(FilterGeneratorFailures, modeOfADateFilter) {
    add(new QueltEeDateEff);
    EXPECT_EQ(run(s_coreFailure), s_coreFailure);
    EXPECT_EQ(m_errors, Messages{"ERROR, GetMode on EeGenericExpr Failed"});
}

TEST_F(FilterGeneratorFailures, modeOfACriteriaFilter) {
    add(engineOption());
    EXPECT_EQ(run(s_coreFailure), s_coreFailure);
    EXPECT_EQ(m_errors, Messages{"ERROR : GetMode on EeGenericExpr Failed"});
}

TEST_F(FilterGeneratorFailures, modeOfAFilterOfChanges) {
    m_pList->getNamedEffectivities().Put(garage.change);
    EXPECT_EQ(run(s_coreFailure), s_coreFailure);
    EXPECT_EQ(m_errors, Messages{"ERROR, GetMode on EeGenericExpr Failed"});
}

TEST_F(FilterGeneratorFailures, dictionariesThatCannotBeListed) {
    add(engineOption());
    garage.context.m_namesResult = s_coreFailure;
    EXPECT_EQ(run(), s_coreFailure);
    EXPECT_EQ(m_errors,
              Messages{"ERROR : Call to QueltEeExpressionContext::GetAllDictionariesByName() has failed."});
}

TEST_F(FilterGeneratorFailures, nullMapOfDictionaries) {
    add(engineOption());
    garage.context.m_names = nullptr;
    EXPECT_EQ(run(), E_FAIL);
    EXPECT_EQ(m_errors, Messages{"ERROR : Null pointer on Dictionaries map."});
}

TEST_F(FilterGeneratorFailures, foreignDictionary) {
    QueltInMap dictionaries(QueltInString::sType(), QueltInObject::sType());
    dictionaries.Put(QueltInString("Engine"), *garage.engine);
    garage.context.m_names = &dictionaries;
    add(engineOption());
    EXPECT_EQ(run(), E_FAIL);
    EXPECT_EQ(m_errors, Messages{"ERROR"});
}

TEST_F(FilterGeneratorFailures, dictionaryUnderTwoNames) {
    QueltInMap dictionaries(QueltInString::sType(), QueltInObject::sType());
    dictionaries.Put(QueltInString("Truck"), *garage.truck);
    dictionaries.Put(QueltInString("Lorry"), *garage.truck);
    garage.context.m_names = &dictionaries;
    add(engineOption());
    EXPECT_EQ(run(), E_FAIL);
    EXPECT_EQ(m_errors, Messages{"ERROR : unexpected"});
}

TEST_F(FilterGeneratorFailures, sixthKindOfCriterion) {
    add(new SixthEff);
    EXPECT_EQ(run(), E_FAIL);
    EXPECT_EQ(m_errors, Messages{"ERROR : Unexpected type of QueltEeVarEff into Filter."});
}

TEST_F(FilterGeneratorFailures, variableOfAnotherKind) {
    QueltEeVarEff* const criteria[] = {
        new OnVariable<QueltEeSerialEff>(garage.engine), new OnVariable<QueltEeTreeSeriesEff>(garage.engine),
        new OnVariable<QueltEeOptionEff>(garage.unit), new OnVariable<QueltEeSelectionEff>(garage.engine)};
    for (QueltEeVarEff* const criterion : criteria) {
        m_pList = new QueltQmSpecList;
        add(criterion);
        EXPECT_EQ(run(), E_FAIL);
        EXPECT_EQ(m_errors, Messages{"ERROR : unexpected result for cast"});
    }
}

TEST_F(FilterGeneratorFailures, criterionWithoutVariable) {
    QueltEeVarEff* const criteria[] = {
        new OnVariable<QueltEeSerialEff>(nullptr), new OnVariable<QueltEeTreeSeriesEff>(nullptr),
        new OnVariable<QueltEeOptionEff>(nullptr), new OnVariable<QueltEeSelectionEff>(nullptr)};
    for (QueltEeVarEff* const criterion : criteria) {
        m_pList = new QueltQmSpecList;
        add(criterion);
        EXPECT_EQ(run(), E_FAIL);
        EXPECT_EQ(m_errors, Messages{"ERROR : associated Var is NULL"});
    }
}

TEST_F(FilterGeneratorFailures, criterionThatCannotBeCloned) {
    struct Row {
        QueltEeVarEff* criterion;
        const char* message;
    };
    const char* const added = "ERROR : Add SerialEff to QmSelectionList Failed.";
    const Row rows[] = {
        {new UncloneableEff<QueltEeDateEff>, "ERROR : add DateEff to QmSelectionList Failed."},
        {new UncloneableEff<QueltEeSerialEff>(garage.unit), added},
        {new UncloneableEff<QueltEeTreeSeriesEff>(garage.line), added},
        {new UncloneableEff<QueltEeOptionEff>(garage.engine), added},
        {new UncloneableEff<QueltEeSelectionEff>(garage.package),
         "ERROR : add SerialEff to QmSelectionList Failed."}};
    for (const Row& row : rows) {
        m_pList = new QueltQmSpecList;
        add(row.criterion);
        EXPECT_EQ(run(), E_POINTER);
        EXPECT_EQ(m_errors, Messages{row.message});
    }
}

TEST_F(FilterGeneratorFailures, featureLookUp) {
    struct Row {
        std::optional<long> result;
        bool hasPossible;
        bool hasRejected;
        long expected;
        const char* message;
    };
    const ContextDouble::MakeSet none = [] { return nullptr; };
    const Row rows[] = {
        {s_coreFailure, true, true, s_coreFailure,
         "ERROR : Call to QueltEeExpressionContext::GetSetOfMDsContainingFeature() has failed."},
        {S_OK, false, true, E_FAIL, "ERROR : Null pointer on PossibleMDs has been returned."},
        {1, false, true, E_FAIL, "ERROR : Null pointer on PossibleMDs has been returned."},
        {S_OK, true, false, E_FAIL, "ERROR : Null pointer on RejectedMDs has been returned."},
        {1, true, true, E_FAIL, "ERROR : Unable to find one MD containing current QueltEeCatOptionVar."}};
    for (const Row& row : rows) {
        m_pList = new QueltQmSpecList;
        add(engineOption());
        garage.context.m_featureResult = row.result;
        garage.context.m_makePossible = row.hasPossible ? ContextDouble::MakeSet() : none;
        garage.context.m_makeRejected = row.hasRejected ? ContextDouble::MakeSet() : none;
        EXPECT_EQ(run(), row.expected);
        EXPECT_EQ(m_errors, Messages{row.message});
    }
}

TEST_F(FilterGeneratorFailures, selectionInNoDictionary) {
    add(new QueltEeSelectionEff(garage.package));
    garage.context.m_featureResult = 1;
    EXPECT_EQ(run(), E_FAIL);
    EXPECT_EQ(m_errors, Messages{"ERROR : Unable to find one MD containing current QueltEeSelectionVar."});
}

TEST_F(FilterGeneratorFailures, positiveResultsOtherThanOneAreSuccesses) {
    add(engineOption());
    garage.context.m_featureResult = 2;
    EXPECT_EQ(run(), S_OK);
    EXPECT_EQ(m_filed, 1);
}

TEST_F(FilterGeneratorFailures, narrowingToTheHolder) {
    const auto runWith = [this](SetWith* possible, SetWith* rejected) {
        m_pList = new QueltQmSpecList;
        add(engineOption());
        add(new QueltEeSerialEff(garage.unit));
        garage.context.m_makePossible = [possible] { return possible; };
        garage.context.m_makeRejected = [rejected] { return rejected; };
        return run();
    };
    EXPECT_EQ(runWith(new SetWith({garage.truck, garage.van}), new SetWith({}, true)), E_FAIL);
    EXPECT_EQ(m_errors, Messages{"ERROR : Unable to put possible MDs set into rejected MDs set."});
    auto* const refusing = new SetWith({garage.truck, garage.van});
    refusing->m_refusesPut = true;
    EXPECT_EQ(runWith(refusing, new SetWith({})), E_FAIL);
    EXPECT_EQ(m_errors, Messages{"ERROR : unexpected"});
    EXPECT_EQ(runWith(new SetWith({garage.van}), new SetWith({})), E_FAIL);
    EXPECT_EQ(m_errors, Messages{"ERROR: No dico compatible with the QueltEeSerialVar."});
}

TEST_F(FilterGeneratorFailures, choosingTheDictionary) {
    const auto runWith = [this](SetWith* possible) {
        m_pList = new QueltQmSpecList;
        add(engineOption());
        garage.context.m_makePossible = [possible] { return possible; };
        return run();
    };
    EXPECT_EQ(runWith(new SetWith({})), E_FAIL);
    EXPECT_EQ(m_errors, Messages{"ERROR : Set of PossibleMDs is empty, unable to assign one MD to "
                                 "QueltEeFilterExpression."});
    EXPECT_EQ(runWith(new SetWith({nullptr})), E_FAIL);
    EXPECT_EQ(m_errors, Messages{"ERROR : Unable to get element from PossibleMDs set."});
    EXPECT_EQ(runWith(new SetWith({garage.engine})), E_FAIL);
    EXPECT_EQ(m_errors, Messages{"ERROR : Unable to cast QueltInObject into QueltEeModelDico."});
}

TEST_F(FilterGeneratorFailures, namedEffectivities) {
    const auto runWith = [this](std::initializer_list<QueltInObject*> named) {
        delete m_pList;
        m_pList = new ListDouble(named);
        return run();
    };
    EXPECT_EQ(runWith({garage.engine}), E_FAIL);
    EXPECT_EQ(m_errors, Messages{"ERROR : unexpected type"});
    EXPECT_EQ(runWith({nullptr}), E_FAIL);
    EXPECT_EQ(m_errors, Messages{"ERROR : unexpected type"});
    setExpression<QueltEeChangeExpression>(garage.change);
    EXPECT_EQ(runWith({&garage.change, &garage.change}), E_FAIL);
    EXPECT_EQ(m_errors.back(), "ERROR : unexpected");
}

TEST_F(FilterGeneratorFailures, expressionOfANamedEffectivity) {
    const std::string warning =
        "WARNING : Case of a filter with pure changes, all dictionaries of the first change "
        "will be assigned to the possible list of MD for the filter.";
    EffectivityDouble unreadable("ECO-2", guidOf(9));
    m_pList->getNamedEffectivities().Put(unreadable);
    EXPECT_EQ(run(), s_coreFailure);
    EXPECT_EQ(m_errors, (Messages{warning, "ERROR : Call to getExpr() on QueltEeEffectivity has failed."}));

    m_pList = new QueltQmSpecList;
    m_pList->getNamedEffectivities().Put(garage.change);
    setExpression<ApplicabilityDouble>(garage.change);
    EXPECT_EQ(run(), s_coreFailure);
    EXPECT_EQ(m_errors, (Messages{warning, "ERROR : Unable to get dictionaries for current change."}));
}

TEST_F(FilterGeneratorFailures, filing) {
    m_pOutputType = QueltEeChangeExpression::sType();
    add(new QueltEeDateEff);
    EXPECT_EQ(run(), E_INVALIDARG);
    EXPECT_EQ(m_errors, Messages{"ERROR : Put QueltEeFilterExpression in map failed."});
    m_pList = new QueltQmSpecList;
    add(engineOption());
    EXPECT_EQ(run(), E_INVALIDARG);
    EXPECT_EQ(m_errors, Messages{"ERROR : Put QueltEeFilterExpression in map failed."});
}

TEST(FilterGenerator, leaksNothingOnTheHeap) {
    const Garage<> garage;
    auto* const list = new QueltQmSpecList;
    QueltEeVarEff* date = new QueltEeDateEff;
    QueltEeVarEff* option = new QueltEeOptionEff(garage.engine);
    QueltEeVarEff* serial = new QueltEeSerialEff(garage.unit);
    list->addVarEff(date);
    list->addVarEff(option);
    list->addVarEff(serial);
    const QueltEeGenericExpression expression(list, Mode::atLeastOne);
    auto* const output = new QueltInMap(QueltInIntHolder::sType(), QueltEeFilterExpression::sType());
    EXPECT_EQ(quelt::FilterGenerator(s_trace, true, expression, garage.context).run(*output), S_OK);
    EXPECT_EQ(output->GetLength(), 2);
    QueltInDeleteWithObjects(output);
}

} // namespace
