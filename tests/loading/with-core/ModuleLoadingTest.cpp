// A host that links the core, builds expressions with it, and loads the module at run time.

#include "compiled/QueltBioBuffer.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeGenericExpression.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "expression/QueltEeOperators.h"
#include "expression/QueltQmSpecList.h"
#include "infrastructure/QueltInGuid.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInList.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInString.h"
#include "infrastructure/QueltInTraceSink.h"

#include "core/infrastructure/OnThreads.h"
#include "loading/support/ExportedNames.h"
#include "loading/support/Library.h"
#include "module/support/CompiledSamples.h"
#include "module/support/Garage.h"
#include "module/support/LiveAllocations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace quelt::test;

constexpr const char* s_moduleFile = QUELT_MODULE_FILE;

/// The two switches of the module, as the environment says them when it is loaded.
struct Switches {
    bool migRen = false;
    bool optimization = false;
};

constexpr Switches s_settings[] = {{false, false}, {true, false}, {false, true}, {true, true}};

void set(const Switches& switches) {
    setEnvironment("CGE_MigRen", switches.migRen ? "1" : nullptr);
    setEnvironment("CFG_DA_Migration_Optimization", switches.optimization ? "1" : nullptr);
}

/// The module, loaded for as long as the object lives, with its services.
struct Module {
    Library library{s_moduleFile};
    Convert* convert = library.function<Convert>(s_convert);
    Branch* branch = library.function<Branch>(s_branch);
    Retrieve* retrieve = library.function<Retrieve>(s_retrieve);
    TypeOf* typeOfVisitor = library.function<TypeOf>(s_typeOfVisitor);
    TypeOf* typeOfElement = library.function<TypeOf>(s_typeOfElement);
};

struct DeleteWithObjects {
    void operator()(QueltInMap* map) const { QueltInDeleteWithObjects(map); }
};
using ConvertedMap = std::unique_ptr<QueltInMap, DeleteWithObjects>;

struct Converted {
    long result = 0;
    ConvertedMap map;
};

Converted convert(const Module& module, const QueltEeGenericExpression& expression,
                  const QueltEeExpressionContext& context, unsigned char change = 0) {
    QueltInMap* map = nullptr;
    const long result = module.convert(expression, context, change, map, nullptr);
    return {result, ConvertedMap(map)};
}

QueltEeOptionEff* engineIs(const Garage<>& garage, const char* value) {
    auto* const effectivity = new QueltEeOptionEff(garage.engine);
    EXPECT_EQ(effectivity->addValue(garage.engine->findValue(value).value()), S_OK);
    return effectivity;
}

/// [2011, 2013] of the product series Unit, in whose revision table stand the years 2010 and 2012.
std::unique_ptr<QueltEeGenericExpression> listOnSeries(const Garage<>& garage) {
    auto list = std::make_unique<QueltQmSpecList>();
    auto* const serial = new QueltEeSerialEff(garage.unit);
    serial->addInterval({2011, 2013, 1, 1});
    QueltEeVarEff* criterion = serial;
    EXPECT_EQ(list->addVarEff(criterion), S_OK);
    return std::make_unique<QueltEeGenericExpression>(list.release(),
                                                      QueltEeGenericExpression::ListMode::all);
}

std::string textIn(const QueltInMap& map, unsigned int domain) {
    const QueltInObject* const expression = map.Get(QueltInIntHolder(domain));
    return expression != nullptr ? std::string(expression->toString().view()) : "nothing";
}

/// What the module does with the series: without CGE_MigRen both bounds are one lower; with it, 2010 has no
/// revision and becomes the first number of the year after, 7, and 2013, behind the last year, the open end.
void expectSwitches(const Module& module, const Switches& switches) {
    const Garage<> garage;
    const std::unique_ptr<QueltEeGenericExpression> list = listOnSeries(garage);
    const Converted ofList = convert(module, *list, garage.context);
    ASSERT_EQ(ofList.result, S_OK);
    EXPECT_EQ(textIn(*ofList.map, 2), switches.migRen ? "filter(Truck: all: Unit in [7, +inf])"
                                                      : "filter(Truck: all: Unit in [2010, 2012])");

    // An OR that says nothing of any feature: the classifier finds no class and the conversion is refused;
    // the fixed rule takes it for a criterion that applies in every dictionary.
    auto* const either = new QueltEeOrOp;
    ASSERT_EQ(either->addChild(*new QueltEeTrue), S_OK);
    const QueltEeGenericExpression tree(either->getNodeRef());
    const QueltInTraceCapture errors(QueltInTraceCapture::Wanted::unconditionalLines);
    const Converted ofTree = convert(module, tree, garage.context);
    EXPECT_EQ(ofTree.result, switches.optimization ? S_OK : E_FAIL);
    EXPECT_EQ(textIn(*ofTree.map, 2),
              switches.optimization ? "effectivity(Truck: own OR(TRUE), Van: own OR(TRUE))" : "nothing");
}

class ModuleLoading : public testing::Test {
protected:
    void SetUp() override {
        set({});
        ASSERT_FALSE(Library::isLoaded(s_moduleFile)) << "nothing but these tests loads it";
    }
    void TearDown() override {
        set({});
        EXPECT_FALSE(Library::isLoaded(s_moduleFile)) << "it is gone when its last user has gone";
    }
};

TEST_F(ModuleLoading, SwitchesAreReadAnewWhenItIsLoadedAgain) {
    for (const Switches& before : s_settings) {
        for (const Switches& after : s_settings) {
            for (const Switches& now : {before, after}) {
                SCOPED_TRACE(testing::Message()
                             << "CGE_MigRen " << now.migRen << ", optimization " << now.optimization);
                set(now);
                const Module module;
                expectSwitches(module, now);
            }
            ASSERT_FALSE(Library::isLoaded(s_moduleFile));
        }
    }
}

TEST_F(ModuleLoading, SwitchesStayAsTheyWereWhileItIsLoaded) {
    set({true, false});
    const Module module;
    set({false, true});
    expectSwitches(module, {true, false});
    const Module again;
    expectSwitches(again, {true, false});
}

TEST_F(ModuleLoading, WhatItHasConvertedOutlivesIt) {
    const Garage<> garage;
    const std::unique_ptr<QueltEeGenericExpression> list = listOnSeries(garage);
    auto* const both = new QueltEeAndOp;
    ASSERT_EQ(both->addChild(*new QueltEeVarEffLeaf(engineIs(garage, "V6"))), S_OK);
    ASSERT_EQ(both->addChild(*new QueltEeVarEffLeaf(engineIs(garage, "V8"))), S_OK);
    const QueltEeGenericExpression tree(both->getNodeRef());
    const QueltEeGenericExpression constant((new QueltEeTrue)->getNodeRef());

    std::vector<Converted> converted;
    {
        const Module module;
        converted.push_back(convert(module, *list, garage.context));
        converted.push_back(convert(module, tree, garage.context));
        converted.push_back(convert(module, tree, garage.context, 1));
        converted.push_back(convert(module, constant, garage.context));
        EXPECT_EQ(module.branch(garage.context, *converted.back().map), 0);
    }
    ASSERT_FALSE(Library::isLoaded(s_moduleFile));

    EXPECT_EQ(textIn(*converted[0].map, 2), "filter(Truck: all: Unit in [2010, 2012])");
    EXPECT_EQ(textIn(*converted[1].map, 2), "effectivity(Truck: own AND(Engine in {V6}, Engine in {V8}))");
    EXPECT_EQ(textIn(*converted[2].map, 2), "change(Truck: own AND(Engine in {V6}, Engine in {V8}))");
    EXPECT_EQ(textIn(*converted[3].map, 3), "effectivity(global: TRUE)");
    EXPECT_NE(QueltEeChangeExpression::cast(converted[2].map->Get(QueltInIntHolder(2))), nullptr);
}

TEST_F(ModuleLoading, WhatItHasTracedOutlivesIt) {
    const Garage<> garage;
    const QueltEeGenericExpression nothing;
    const QueltInTraceCapture capture(QueltInTraceCapture::Wanted::everything);
    {
        const Module module;
        EXPECT_EQ(convert(module, nothing, garage.context).result, E_FAIL);
    }
    ASSERT_FALSE(Library::isLoaded(s_moduleFile));
    ASSERT_FALSE(capture.lines().empty());
    const QueltInTraceLine& entry = capture.lines().front();
    EXPECT_EQ(entry.className, "QueltEeTarselMigrationServices");
    EXPECT_EQ(entry.domainName, "QueltDataMigration");
    EXPECT_EQ(entry.methodName, "ConvertEeGenericExprToEeExpr");
    EXPECT_EQ(entry.level, 1);
    std::vector<std::string> texts;
    for (const QueltInTraceLine& line : capture.lines()) {
        EXPECT_EQ(line.domainName, "QueltDataMigration");
        texts.emplace_back(line.text);
    }
    EXPECT_NE(std::find(texts.begin(), texts.end(), "        ERROR : unexpected"), texts.end());
}

TEST_F(ModuleLoading, ItsTypeClassesComeAndGoWithIt) {
    for (int round = 0; round < 3; ++round) {
        const Module module;
        const QueltInObjectTypeClass* const visitor = module.typeOfVisitor();
        const QueltInObjectTypeClass* const element = module.typeOfElement();
        ASSERT_NE(visitor, nullptr);
        ASSERT_NE(element, nullptr);
        EXPECT_STREQ(visitor->getName(), "QueltEeGenExprToEeMMExprVisitor");
        EXPECT_STREQ(visitor->getParent()->getName(), "QueltEeNodeVisitor");
        EXPECT_STREQ(element->getName(),
                     "QueltReconstituteEffectivityFromCompiledBinary::OperationStackElement");
        EXPECT_EQ(element->getParent(), QueltInObject::sType()) << "the core's own";
        EXPECT_EQ(module.typeOfVisitor(), visitor) << "one for as long as the module is loaded";
    }
}

TEST_F(ModuleLoading, ReadsCompiledChanges) {
    CompiledSamples samples;
    const QueltBioBuffer binary = samples.compiledDnf({{{7, false, false}, {8, true, false}}});
    for (int round = 0; round < 2; ++round) {
        QueltInList contexts(QueltInGuid::sType());
        const Module module;
        QueltInList operations(module.typeOfElement());
        ASSERT_EQ(module.retrieve(binary, operations, contexts), S_OK);
        ASSERT_EQ(operations.GetLength(), 2);
        ASSERT_EQ(contexts.GetLength(), 1);
        for (auto elements = operations.cBegin(); QueltInObject* const operation = elements.GetGoToNext();) {
            EXPECT_EQ(operation->dType(), module.typeOfElement());
            delete operation; // its class is the module's: it must not outlive it
        }
        for (auto elements = contexts.cBegin(); const QueltInObject* const guid = elements.GetGoToNext();) {
            delete guid;
        }
    }
}

/// Loads the module, converts and unloads it.
void useOnce(const Garage<>& garage) {
    const QueltInTraceCapture capture(QueltInTraceCapture::Wanted::everything);
    const Module module;
    const std::unique_ptr<QueltEeGenericExpression> list = listOnSeries(garage);
    const Converted converted = convert(module, *list, garage.context);
    EXPECT_EQ(converted.result, S_OK);
    EXPECT_EQ(textIn(*converted.map, 2), "filter(Truck: all: Unit in [2010, 2012])");
}

TEST_F(ModuleLoading, LeavesNothingBehind) {
    const Garage<> garage;
    useOnce(garage);
    const long before = liveAllocations();
    for (int round = 0; round < 20; ++round) {
        useOnce(garage);
    }
    EXPECT_EQ(liveAllocations(), before);
}

TEST_F(ModuleLoading, ThreadsMayLoadItAtOnce) {
    constexpr int rounds = 100;
    onThreads(2, [](unsigned int /*number*/) {
        const Garage<> garage;
        for (int round = 0; round < rounds; ++round) {
            useOnce(garage);
        }
    });
}

} // namespace
