// What a core that keeps its promises never does: each test lets one operation of it fail, or answer with
// what it never answers with.

#include "ChangeOperationsRetrieval.h"

#include "QueltReconstituteEffectivityFromCompiledBinary.h"
#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeOperators.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInList.h"
#include "module/support/Captured.h"
#include "module/support/CompiledSamples.h"
#include "module/support/ConversionDoubles.h"
#include "module/support/LiveAllocations.h"

#include <functional>
#include <gmock/gmock.h>
#include <optional>

namespace quelt::test {
namespace {

using Element = QueltReconstituteEffectivityFromCompiledBinary::OperationStackElement;
using testing::ElementsAre;

constexpr const char* s_unsupported = "ERROR: Unsupported content of compiled binary.";

/// A context that refuses, or forgets, what it is given.
class ForgetfulContext : public QueltEeExpressionContext {
public:
    ForgetfulContext(long addResult, bool findsNothing)
        : m_addResult(addResult), m_findsNothing(findsNothing) {}
    long AddModelDico(QueltEeModelDico*& dictionary, unsigned char takeOver) override {
        m_takeOver = takeOver;
        return m_addResult < 0 ? m_addResult : QueltEeExpressionContext::AddModelDico(dictionary, takeOver);
    }
    long GetModelDico(const QueltInString& name, QueltEeModelDico*& dictionary) const override {
        return m_findsNothing ? S_OK : QueltEeExpressionContext::GetModelDico(name, dictionary);
    }
    static inline int m_takeOver = -1;

private:
    long m_addResult;
    bool m_findsNothing;
};

/// A view that fails to hand out normal forms, or hands out none.
class ViewDouble : public QueltFltEffectivityView {
public:
    explicit ViewDouble(long result) : m_result(result) {}
    long getDnf(const QueltInGuid& /*guid*/, QueltDnf*& dnf) const override {
        dnf = nullptr;
        return m_result;
    }

private:
    long m_result;
};

/// The core, but for what is set.
class CoreDouble : public CompiledBinaryCore {
public:
    [[nodiscard]] long read(QueltBioBuffer& buffer, QueltInObject*& object) const override {
        return m_read ? m_read(object) : CompiledBinaryCore::read(buffer, object);
    }
    [[nodiscard]] long convertGuidToString(const QueltInGuid& guid, QueltInString& text) const override {
        return m_convertResult < 0 ? m_convertResult : CompiledBinaryCore::convertGuidToString(guid, text);
    }
    [[nodiscard]] std::unique_ptr<QueltEeExpressionContext> makeContext() const override {
        return m_makeContext ? m_makeContext() : CompiledBinaryCore::makeContext();
    }
    [[nodiscard]] QueltEeNodeRef* dnf2NodeRef(const QueltDnf& dnf, QueltEeModelDico& dictionary,
                                              QueltEeExpressionContext& context) const override {
        return m_makeTree ? m_makeTree() : CompiledBinaryCore::dnf2NodeRef(dnf, dictionary, context);
    }

    std::function<long(QueltInObject*&)> m_read;
    long m_convertResult = S_OK;
    std::function<std::unique_ptr<QueltEeExpressionContext>()> m_makeContext;
    std::function<QueltEeNodeRef*()> m_makeTree;
};

/// The entries of a map, which only classes derived from it reach.
struct Opened : QueltInMap {
    static auto& entriesOf(QueltInMap& map) { return map.*(&Opened::m_entries); }
};

/// A reference as long as it is put into lists, the shown one and that of the module; any object from then
/// on.
class FadingReference : public QueltEeNodeRef {
public:
    [[nodiscard]] QueltInObjectTypeClass* dType() const override {
        return m_times-- > 0 ? QueltEeNodeRef::sType() : QueltInObject::sType();
    }

private:
    mutable int m_times = 2;
};

/// A negated leaf that says so with another number than 1.
class OddlyNegatedLeaf : public QueltEeEffLeaf {
public:
    using QueltEeEffLeaf::QueltEeEffLeaf;
    [[nodiscard]] unsigned char isNegated() const override { return 4; }
};

class ChangeOperationsRetrievalTest : public testing::Test {
protected:
    /// Runs on `binary` and notes what comes of it.
    long run() {
        QueltInList operations(Element::sType());
        QueltInList contexts(QueltInGuid::sType());
        const MigrationTrace trace("QueltReconstituteEffectivityFromCompiledBinary");
        const CapturedErrors captured;
        const long result = ChangeOperationsRetrieval(trace, core, binary, operations, contexts).run();
        operationCount = deleteAll(operations);
        contextCount = deleteAll(contexts);
        errors = captured.texts();
        return result;
    }
    /// Runs twice, the second time to see that nothing is left behind.
    void expectFailure(const std::string& message, long result = E_FAIL) {
        EXPECT_EQ(run(), result);
        EXPECT_THAT(errors, ElementsAre(message, "DEBUG: Input compiled binary " +
                                                     std::string(binary.toString().view())));
        errors.clear();
        const long before = liveAllocations();
        static_cast<void>(run());
        errors.clear();
        EXPECT_EQ(liveAllocations(), before);
    }
    int deleteAll(QueltInList& list) {
        for (auto elements = list.cBegin(); auto* const element = elements.GetGoToNext();) {
            if (const Element* const operation = Element::cast(element)) {
                lastPositive = operation->m_Positive;
            }
            delete element;
        }
        return list.GetLength();
    }
    /// The parser yields an effectivity with this view.
    void readView(std::function<QueltFltEffectivityView*()> makeView) {
        core.m_read = [makeView = std::move(makeView)](QueltInObject*& object) {
            object = CompiledSamples::holding(makeView()).release();
            return S_OK;
        };
    }
    void makeTree(std::function<QueltEeNode*()> makeNode) {
        core.m_makeTree = [makeNode = std::move(makeNode)] { return makeNode()->getNodeRef(); };
    }

    CompiledSamples samples;
    CoreDouble core;
    QueltBioBuffer binary = samples.compiledDnf({{{11}}});
    QueltEePredefEff change{"ECO-1", guidOf(21)};
    std::vector<std::string> errors;
    int operationCount = 0;
    int contextCount = 0;
    int lastPositive = -1;
};

TEST_F(ChangeOperationsRetrievalTest, withoutDoublesNothingFails) {
    EXPECT_EQ(run(), S_OK);
    EXPECT_TRUE(errors.empty());
    EXPECT_EQ(operationCount, 1);
    EXPECT_EQ(contextCount, 1);
}

TEST_F(ChangeOperationsRetrievalTest, parserFails) {
    core.m_read = [](QueltInObject*& /*object*/) { return s_coreFailure; };
    expectFailure("ERROR: Call to QueltCompiledBinaryParser::Read() has failed.", s_coreFailure);
    EXPECT_EQ(contextCount, 0);
}

TEST_F(ChangeOperationsRetrievalTest, parserSucceedsWithAPositiveResult) {
    core.m_read = [this](QueltInObject*& object) {
        object = samples.make({{1, {{{11}}}}}).release();
        return 1L;
    };
    EXPECT_EQ(run(), S_OK);
}

TEST_F(ChangeOperationsRetrievalTest, parserYieldsNothing) {
    core.m_read = [](QueltInObject*& object) {
        EXPECT_EQ(object, nullptr) << "starts as null";
        return S_OK;
    };
    expectFailure("ERROR: Call to QueltCompiledBinaryParser::Read() returned a null QueltInObject pointer.");
}

TEST_F(ChangeOperationsRetrievalTest, parserYieldsAnotherObjectWhichIsNotDeleted) {
    const std::unique_ptr<QueltInIntHolder> foreign = std::make_unique<QueltInIntHolder>(5);
    core.m_read = [&foreign](QueltInObject*& object) {
        object = foreign.get();
        return S_OK;
    };
    expectFailure("ERROR: Unable to cast compiled binary expression into QueltFltEffectivity.");
    EXPECT_EQ(foreign->m_value, 5) << "deleted here, once";
}

TEST_F(ChangeOperationsRetrievalTest, contextHasNoGuid) {
    readView([] {
        auto* const view = new QueltFltEffectivityView;
        EXPECT_EQ(view->addContext(guidOf(1), new QueltDnf), S_OK);
        Opened::entriesOf(view->m_contexts).push_back({nullptr, nullptr});
        return view;
    });
    expectFailure("ERROR: Retrieve a null ModelDico guid.");
    EXPECT_EQ(contextCount, 1) << "the one in front of it";
    EXPECT_EQ(operationCount, 0);
}

TEST_F(ChangeOperationsRetrievalTest, contextIsKnownByAnotherKey) {
    readView([] {
        auto* const view = new QueltFltEffectivityView;
        Opened::entriesOf(view->m_contexts).push_back({new QueltInIntHolder(1), nullptr});
        return view;
    });
    expectFailure("ERROR: Retrieve a null ModelDico guid.");
    EXPECT_EQ(contextCount, 0);
}

TEST_F(ChangeOperationsRetrievalTest, guidHasNoText) {
    core.m_convertResult = s_coreFailure;
    expectFailure("ERROR: Call to ConvertGuidToString() failed.", s_coreFailure);
    EXPECT_EQ(contextCount, 1);
}

TEST_F(ChangeOperationsRetrievalTest, dictionaryIsRefused) {
    core.m_makeContext = [] { return std::make_unique<ForgetfulContext>(s_coreFailure, false); };
    expectFailure("ERROR: Unable to add current ModelDico to ExpressionContext.", s_coreFailure);
    EXPECT_EQ(ForgetfulContext::m_takeOver, 1);
}

TEST_F(ChangeOperationsRetrievalTest, dictionaryIsNotFoundAgain) {
    core.m_makeContext = [] { return std::make_unique<ForgetfulContext>(S_OK, true); };
    expectFailure("ERROR: Unable to Retrieved created ModelDico from ExpressionContext.");
}

TEST_F(ChangeOperationsRetrievalTest, viewFails) {
    const auto makeView = [](long result) {
        auto* const view = new ViewDouble(result);
        EXPECT_EQ(view->addContext(guidOf(1), new QueltDnf), S_OK);
        return view;
    };
    readView([=] { return makeView(s_coreFailure); });
    expectFailure("ERROR: Unable to retrieve Dnf for current ModelDico.", s_coreFailure);
    readView([=] { return makeView(S_OK); });
    expectFailure("ERROR: Retrieve a null pointer on QueltDnf.");
}

TEST_F(ChangeOperationsRetrievalTest, convertorGivesNothing) {
    core.m_makeTree = []() -> QueltEeNodeRef* { return nullptr; };
    expectFailure(
        "ERROR: Call to QueltEeDnfConvertor::Dnf2NodeRef() returned a null QueltEeNodeRef pointer.");
}

TEST_F(ChangeOperationsRetrievalTest, convertorGivesAReferenceWithoutNode) {
    core.m_makeTree = [] { return new QueltEeNodeRef; };
    expectFailure(s_unsupported);
}

TEST_F(ChangeOperationsRetrievalTest, nodesOfNoOtherKindAreChanges) {
    const std::vector<std::function<QueltEeNode*()>> makers{
        [] { return new QueltEeTrue; },
        [] { return new QueltEeVarEffLeaf; },
        [] { return new QueltEeRestrictionEffLeaf("x"); },
        [] { return new QueltEeNotOp; },
        [] { return new QueltEeNotDomainOp; },
        [] { return new QueltEeOrOp; },
        [] { return new QueltEeEffLeaf(nullptr, nullptr); },
        [this] {
            auto* const group = new QueltEeAndOp;
            auto* const inner = new QueltEeAndOp;
            inner->addChild(*new QueltEeEffLeaf(&change, nullptr));
            group->addChild(*inner);
            return group;
        },
        [] {
            auto* const group = new QueltEeAndOp;
            group->addChild(*new QueltEeOrOp);
            return group;
        },
        [] {
            auto* const group = new QueltEeAndOp;
            group->addChild(*new QueltEeEffLeaf(nullptr, nullptr));
            return group;
        }};
    for (const auto& maker : makers) {
        makeTree(maker);
        expectFailure(s_unsupported);
        EXPECT_EQ(operationCount, 0);
    }
}

TEST_F(ChangeOperationsRetrievalTest, conjunctionHasNoChildren) {
    makeTree([] { return new QueltEeAndOp; });
    expectFailure("ERROR: Unexpected to have no child");
}

TEST_F(ChangeOperationsRetrievalTest, childIsNoReference) {
    QueltEeNodeRef good(new QueltEeEffLeaf(&change, nullptr));
    std::optional<FadingReference> fading;
    makeTree([&] {
        auto* const group = new GroupWith<QueltEeAndOp>;
        group->showing(good);
        group->showing(fading.emplace());
        return group;
    });
    expectFailure("ERROR: Retrieved element isn't a QueltEeNodeRef");
    EXPECT_EQ(operationCount, 1) << "the one in front of it";
}

TEST_F(ChangeOperationsRetrievalTest, childHasNoNode) {
    QueltEeNodeRef empty;
    makeTree([&] { return (new GroupWith<QueltEeAndOp>)->showing(empty); });
    expectFailure(s_unsupported);
}

TEST_F(ChangeOperationsRetrievalTest, anyAnswerButZeroIsNegated) {
    makeTree([this] { return new OddlyNegatedLeaf(&change, nullptr); });
    EXPECT_EQ(run(), S_OK);
    EXPECT_EQ(operationCount, 1);
    EXPECT_EQ(lastPositive, 0);
}

} // namespace
} // namespace quelt::test
