#include "QueltReconstituteEffectivityFromCompiledBinary.h"

#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInList.h"
#include "module/support/Captured.h"
#include "module/support/CompiledSamples.h"
#include "module/support/LiveAllocations.h"

#include <gmock/gmock.h>

namespace quelt::test {
namespace {

using Reconstitution = QueltReconstituteEffectivityFromCompiledBinary;
using Element = Reconstitution::OperationStackElement;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

/// The changes, by the last byte of their GUIDs, with their signs; emptied and deleted.
std::vector<std::pair<std::string, int>> takeOperations(QueltInList& list) {
    std::vector<std::pair<std::string, int>> operations;
    for (auto elements = list.cBegin(); auto* const element = elements.GetGoToNext();) {
        const Element* const operation = Element::cast(element);
        operations.emplace_back(operation == nullptr ? "foreign" : operation->m_Guid.toString().view(),
                                operation == nullptr ? -1 : operation->m_Positive);
        delete element;
    }
    return operations;
}

std::vector<std::string> takeGuids(QueltInList& list) {
    std::vector<std::string> guids;
    for (auto elements = list.cBegin(); auto* const element = elements.GetGoToNext();) {
        guids.emplace_back(QueltInGuid::isObjectOfThisType(*element) != 0 ? element->toString().view()
                                                                          : "foreign");
        delete element;
    }
    return guids;
}

/// What one call came to.
struct Outcome {
    long result;
    std::vector<std::pair<std::string, int>> operations;
    std::vector<std::string> contexts;
    std::vector<std::string> errors;
};

Outcome retrieve(const QueltBioBuffer& binary) {
    QueltInList operations(Element::sType());
    QueltInList contexts(QueltInGuid::sType());
    const CapturedErrors captured;
    const long result = Reconstitution::RetrieveChangeOperations(binary, operations, contexts);
    return {result, takeOperations(operations), takeGuids(contexts), captured.texts()};
}

std::string debugLine(const QueltBioBuffer& binary) {
    return "DEBUG: Input compiled binary " + std::string(binary.toString().view());
}

void expectFailure(const QueltBioBuffer& binary, const char* message, long result = E_FAIL) {
    const Outcome outcome = retrieve(binary);
    EXPECT_EQ(outcome.result, result);
    EXPECT_THAT(outcome.errors, ElementsAre(message, debugLine(binary)));
}

constexpr const char* s_manyDomains = "ERROR: Input compiled binary contains more than one domain.";
constexpr const char* s_noDomain =
    "ERROR: Unable to cast retrieved domain effectivity into QueltFltDomainEffectivity.";
constexpr const char* s_noView =
    "ERROR: Unable to cast retrieved effectivity view into QueltFltEffectivityView.";
constexpr const char* s_noContext = "ERROR: Input compiled binary should contain at least one context.";
constexpr const char* s_unsupported = "ERROR: Unsupported content of compiled binary.";
constexpr const char* s_lists = "ERROR: Input lists don't accept required object types.";
constexpr const char* s_notRead = "ERROR: Call to QueltCompiledBinaryParser::Read() has failed.";

TEST(RetrieveChangeOperations, singleChangeIsOneOperation) {
    CompiledSamples samples;
    for (const bool negated : {false, true}) {
        const Outcome outcome = retrieve(samples.compiledDnf({{{11, negated}}}));
        EXPECT_EQ(outcome.result, S_OK);
        EXPECT_THAT(outcome.operations, ElementsAre(Pair(guidTextOf(11), negated ? 0 : 1)));
        EXPECT_THAT(outcome.contexts, ElementsAre(guidTextOf(1)));
        EXPECT_THAT(outcome.errors, IsEmpty());
    }
}

TEST(RetrieveChangeOperations, conjunctionGivesItsChangesInOrder) {
    CompiledSamples samples;
    const Outcome outcome = retrieve(samples.compiledDnf({{{13}, {11, true}, {12}}}));
    EXPECT_EQ(outcome.result, S_OK);
    EXPECT_THAT(outcome.operations,
                ElementsAre(Pair(guidTextOf(13), 1), Pair(guidTextOf(11), 0), Pair(guidTextOf(12), 1)));
}

TEST(RetrieveChangeOperations, firstContextGivesTheChangesAndAllGiveTheirGuids) {
    CompiledSamples samples;
    const Outcome outcome =
        retrieve(samples.compiled({{3, {{{11}}}}, {1, {{{12}}, {{13}}}}, {2, {{{14, false, true}}}}}));
    EXPECT_EQ(outcome.result, S_OK);
    EXPECT_THAT(outcome.operations, ElementsAre(Pair(guidTextOf(11), 1)));
    EXPECT_THAT(outcome.contexts, ElementsAre(guidTextOf(3), guidTextOf(1), guidTextOf(2)));
}

TEST(RetrieveChangeOperations, thereIsOneDomainAndItIsTheSecond) {
    CompiledSamples samples;
    expectFailure(CompiledSamples::compiled(QueltFltEffectivity()), s_manyDomains);
    const auto two = samples.make({{1, {{{11}}}}});
    ASSERT_EQ(two->addDomain(1, new QueltFltDomainEffectivity), S_OK);
    expectFailure(CompiledSamples::compiled(*two), s_manyDomains);
    for (const unsigned int domain : {0U, 1U, 3U}) {
        expectFailure(
            CompiledSamples::compiled(*CompiledSamples::holding(samples.makeView({{1, {{{11}}}}}), domain)),
            s_noDomain);
    }
}

TEST(RetrieveChangeOperations, thereIsAFullViewWithAContext) {
    CompiledSamples samples;
    expectFailure(
        CompiledSamples::compiled(*CompiledSamples::holding(samples.makeView({{1, {{{11}}}}}), 2, 1)),
        s_noView);
    expectFailure(samples.compiled(SampleView{}), s_noContext);
}

TEST(RetrieveChangeOperations, anyOtherNormalFormIsRefused) {
    CompiledSamples samples;
    const std::vector<SampleDnf> forms{
        {{{11}}, {{12}}},           // OR
        {{{11}, {12}}, {{13}}},     // OR of an AND
        {},                         // FALSE
        {{}},                       // TRUE
        {{{14, false, true}}},      // an option
        {{{14, true, true}, {11}}}, // an option in front of a change
    };
    for (const SampleDnf& form : forms) {
        const QueltBioBuffer binary = samples.compiledDnf(form);
        expectFailure(binary, s_unsupported);
        const Outcome outcome = retrieve(binary);
        EXPECT_THAT(outcome.operations, IsEmpty());
        EXPECT_THAT(outcome.contexts, ElementsAre(guidTextOf(1))) << "were found before the failure";
    }
}

TEST(RetrieveChangeOperations, changesInFrontOfAFailingOneStay) {
    CompiledSamples samples;
    const Outcome outcome = retrieve(samples.compiledDnf({{{11}, {12, true}, {14, false, true}, {13}}}));
    EXPECT_EQ(outcome.result, E_FAIL);
    EXPECT_THAT(outcome.operations, ElementsAre(Pair(guidTextOf(11), 1), Pair(guidTextOf(12), 0)));
}

TEST(RetrieveChangeOperations, whatTheParserRefusesKeepsItsCode) {
    CompiledSamples samples;
    const std::vector<std::uint8_t> noise{'n', 'o', 'n', 'e'};
    expectFailure(QueltBioBuffer(), s_notRead, E_INVALIDARG);
    expectFailure(QueltBioBuffer(noise), s_notRead, E_INVALIDARG);
    const QueltBioBuffer good = samples.compiledDnf({{{11}}});
    expectFailure(QueltBioBuffer(good.getBytes().first(good.getSize() - 1)), s_notRead, E_INVALIDARG);
}

TEST(RetrieveChangeOperations, inputStaysAsItIs) {
    CompiledSamples samples;
    const QueltBioBuffer binary = samples.compiledDnf({{{11}}});
    const QueltBioBuffer before(binary);
    EXPECT_EQ(retrieve(binary).result, S_OK);
    EXPECT_EQ(binary, before);
}

TEST(RetrieveChangeOperations, listsKeepWhatTheyHold) {
    CompiledSamples samples;
    QueltInList operations(QueltInObject::sType());
    QueltInList contexts(QueltInObject::sType());
    operations.PutBack(*new QueltInIntHolder(1));
    contexts.PutBack(*new QueltInIntHolder(2));
    EXPECT_EQ(Reconstitution::RetrieveChangeOperations(samples.compiledDnf({{{11}}}), operations, contexts),
              S_OK);
    EXPECT_EQ(
        Reconstitution::RetrieveChangeOperations(samples.compiledDnf({{{12, true}}}), operations, contexts),
        S_OK);
    EXPECT_THAT(takeOperations(operations),
                ElementsAre(Pair("foreign", -1), Pair(guidTextOf(11), 1), Pair(guidTextOf(12), 0)));
    EXPECT_THAT(takeGuids(contexts), ElementsAre("foreign", guidTextOf(1), guidTextOf(1)));
}

TEST(RetrieveChangeOperations, listsOfAnotherClassMakeItFail) {
    CompiledSamples samples;
    const QueltBioBuffer binary = samples.compiledDnf({{{11}, {12}}});
    QueltInList operations(QueltInIntHolder::sType());
    QueltInList contexts(QueltInGuid::sType());
    const CapturedErrors captured;
    EXPECT_EQ(Reconstitution::RetrieveChangeOperations(binary, operations, contexts), E_FAIL);
    EXPECT_THAT(captured.texts(), ElementsAre(s_lists, debugLine(binary)));
    EXPECT_EQ(operations.GetLength(), 0);
    EXPECT_THAT(takeGuids(contexts), ElementsAre(guidTextOf(1)));

    QueltInList goodOperations(Element::sType());
    QueltInList noContexts(Element::sType());
    EXPECT_EQ(Reconstitution::RetrieveChangeOperations(binary, goodOperations, noContexts), E_FAIL);
    EXPECT_EQ(takeOperations(goodOperations).size(), 2U);
    EXPECT_EQ(noContexts.GetLength(), 0);
}

/// Also one that refused something long ago, and also behind another failure, whose code it replaces.
TEST(RetrieveChangeOperations, listsAreLookedAtOnEveryPath) {
    QueltInList operations(Element::sType());
    QueltInList contexts(QueltInGuid::sType());
    const QueltInIntHolder foreign(1);
    contexts.PutBack(const_cast<QueltInIntHolder&>(foreign));
    const CapturedErrors captured;
    EXPECT_EQ(Reconstitution::RetrieveChangeOperations(QueltBioBuffer(), operations, contexts), E_FAIL);
    EXPECT_THAT(captured.texts(), ElementsAre(s_notRead, s_lists, "DEBUG: Input compiled binary "));
}

TEST(RetrieveChangeOperations, tracesItsWay) {
    CompiledSamples samples;
    const QueltBioBuffer binary = samples.compiled({{2, {{{11}, {12, true}}}}, {1, {{{13}}}}});
    QueltInList operations(Element::sType());
    QueltInList contexts(QueltInGuid::sType());
    const CapturedTrace captured;
    EXPECT_EQ(Reconstitution::RetrieveChangeOperations(binary, operations, contexts), S_OK);
    takeOperations(operations);
    takeGuids(contexts);
    const std::string of = ", " + guidTextOf(2) + ")";
    EXPECT_THAT(captured.texts(),
                ElementsAre("> RetrieveChangeOperations",
                            "Read compiled binary expression " + std::string(binary.toString().view()),
                            "Retrieved ModelDico guid " + guidTextOf(2),
                            "Retrieved ModelDico guid " + guidTextOf(1),
                            "Retrieved Dnf : AND(eff(" + guidTextOf(11) + of + ", not (eff(" +
                                guidTextOf(12) + of + "))",
                            "< RetrieveChangeOperations"));
    for (const QueltInTraceLine& line : captured.lines()) {
        EXPECT_EQ(line.className, "QueltReconstituteEffectivityFromCompiledBinary");
        EXPECT_EQ(line.domainName, "QueltDataMigration");
    }
    EXPECT_EQ(captured.lines().front().lineNumber, captured.lines().back().lineNumber);
}

TEST(RetrieveChangeOperations, failuresAreTracedInsideTheScopeWithTheirPlaces) {
    QueltInList operations(Element::sType());
    QueltInList contexts(QueltInGuid::sType());
    const CapturedTrace captured;
    EXPECT_EQ(Reconstitution::RetrieveChangeOperations(QueltBioBuffer(), operations, contexts), E_INVALIDARG);
    EXPECT_THAT(captured.texts(),
                ElementsAre("> RetrieveChangeOperations", "Read compiled binary expression ", s_notRead,
                            "DEBUG: Input compiled binary ", "< RetrieveChangeOperations"));
    ASSERT_EQ(captured.lines().size(), 7U);
    const std::string indentation = QueltInTraceClass::GetErrorIndent();
    EXPECT_THAT(captured.lines()[2].text, testing::StartsWith(QueltInTraceClass::GetError()));
    EXPECT_EQ(captured.lines()[3].text, indentation + s_notRead);
    EXPECT_THAT(captured.lines()[4].text, testing::StartsWith(QueltInTraceClass::GetError()));
    EXPECT_EQ(captured.lines()[5].text, indentation + "DEBUG: Input compiled binary ");
}

TEST(RetrieveChangeOperations, leavesNothingBehind) {
    CompiledSamples samples;
    const std::vector<QueltBioBuffer> binaries{
        samples.compiledDnf({{{11}, {12, true}}}),        samples.compiledDnf({{{11}}, {{12}}}),
        samples.compiledDnf({{{11}, {14, false, true}}}), samples.compiled(SampleView{}),
        CompiledSamples::compiled(QueltFltEffectivity()), QueltBioBuffer()};
    const auto retrieveAll = [&] {
        for (const QueltBioBuffer& binary : binaries) {
            for (QueltInObjectTypeClass* const type : {QueltInObject::sType(), QueltInIntHolder::sType()}) {
                QueltInList operations(type);
                QueltInList contexts(type);
                const CapturedErrors captured;
                static_cast<void>(Reconstitution::RetrieveChangeOperations(binary, operations, contexts));
                takeOperations(operations);
                takeGuids(contexts);
            }
        }
    };
    retrieveAll(); // what is made once
    const long before = liveAllocations();
    retrieveAll();
    EXPECT_EQ(liveAllocations(), before);
}

TEST(RetrieveChangeOperations, worksInsideAnArena) {
    CompiledSamples samples;
    const QueltBioBuffer binary = samples.compiledDnf({{{11}, {12, true}}});
    QueltInArena arena;
    const auto retrieveInside = [&] {
        {
            const QueltInArenaScope scope(arena);
            QueltInList operations(Element::sType());
            QueltInList contexts(QueltInGuid::sType());
            EXPECT_EQ(Reconstitution::RetrieveChangeOperations(binary, operations, contexts), S_OK);
            EXPECT_EQ(operations.GetLength(), 2);
        }
        arena.reset();
    };
    retrieveInside();
    const long before = liveAllocations();
    retrieveInside();
    EXPECT_EQ(liveAllocations(), before);
}

TEST(OperationStackElementTest, standsForAnAppliedChangeUntilToldOtherwise) {
    const Element element;
    EXPECT_EQ(element.m_Guid, QueltInGuid());
    EXPECT_EQ(element.m_Positive, 1);
    static_assert(std::is_same_v<decltype(element.m_Positive), std::int32_t>);
}

TEST(OperationStackElementTest, copiesAndMovesLeaveTheSource) {
    Element source;
    source.m_Guid = guidOf(7);
    source.m_Positive = 0;
    const auto expectSame = [&](const Element& element) {
        EXPECT_EQ(element.m_Guid, guidOf(7));
        EXPECT_EQ(element.m_Positive, 0);
        EXPECT_EQ(source.m_Guid, guidOf(7));
        EXPECT_EQ(source.m_Positive, 0);
    };
    const Element copy(source);
    expectSame(copy);
    const Element moved(std::move(source));
    expectSame(moved);
    Element assigned;
    EXPECT_EQ(&(assigned = source), &assigned);
    expectSame(assigned);
    Element moveAssigned;
    EXPECT_EQ(&(moveAssigned = std::move(source)), &moveAssigned);
    expectSame(moveAssigned);
}

TEST(OperationStackElementTest, hasItsPartInTheTypeRegistry) {
    Element element;
    const QueltInGuid foreign;
    QueltInObject& object = element;
    const QueltInObject& constant = element;
    EXPECT_EQ(object.dType(), Element::sType());
    EXPECT_STREQ(Element::sType()->getName(),
                 "QueltReconstituteEffectivityFromCompiledBinary::OperationStackElement");
    EXPECT_NE(Element::sType()->isa(QueltInObject::sType()), 0);
    EXPECT_NE(Element::isObjectOfThisType(object), 0);
    EXPECT_EQ(Element::isObjectOfThisType(foreign), 0);
    EXPECT_EQ(Element::cast(object), &element);
    EXPECT_EQ(Element::cast(constant), &element);
    EXPECT_EQ(Element::cast(static_cast<const QueltInObject&>(foreign)), nullptr);
    EXPECT_EQ(object.toString().view(), Element::sType()->getName()) << "inherited from the root";
}

} // namespace
} // namespace quelt::test
