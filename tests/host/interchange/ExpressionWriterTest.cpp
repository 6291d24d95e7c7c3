#include "interchange/ExpressionWriter.h"

#include "effectivity/QueltEeTreeSeriesEff.h"
#include "expression/QueltEeFilterExpression.h"
#include "expression/QueltEeNode.h"
#include "host/support/Samples.h"
#include "interchange/ContextWriter.h"
#include "interchange/ExpressionReader.h"

#include <gtest/gtest.h>

namespace quelt::host {
namespace {

using test::contextOf;
using test::Padded;
using test::sampleContext;

/// Reads a text and writes what it means again: for the exact spelling of the interchange form.
class ExpressionWriterTest : public testing::Test {
protected:
    std::string rewrittenNode(const std::string& node) {
        const std::string body =
            rewritten(R"({"tree":)" + node + "}", [&](const Value& value, JsonWriter& writer) {
                const auto expression = m_reader.readTree(Fields<Key::tree>(value).need<Key::tree>());
                m_writer.writeNode(writer, expression->GetNodeRef());
            });
        return body;
    }
    std::string rewrittenMultiModel(const std::string& expression) {
        return rewritten(expression, [&](const Value& value, JsonWriter& writer) {
            m_writer.writeMultiModel(writer, *m_reader.readMultiModel(value));
        });
    }
    std::string rewrittenList(const std::string& body) {
        return rewritten(body, [&](const Value& value, JsonWriter& writer) {
            const Fields<Key::list, Key::named, Key::mode> fields(value);
            const auto expression = m_reader.readList(fields.need<Key::list>(), fields.find<Key::named>(),
                                                      fields.find<Key::mode>());
            writer.beginObject();
            m_writer.writeBody(writer, *expression);
            writer.endObject();
        });
    }

    std::unique_ptr<LoadedContext> context = contextOf(sampleContext());

private:
    template <class Rewrite>
    std::string rewritten(const std::string& text, Rewrite rewrite) {
        const Padded padded(text);
        JsonParser parser;
        const Value value(parser.parse(padded.text()), Place());
        TextBuffer buffer;
        JsonWriter writer(buffer);
        rewrite(value, writer);
        return std::string(buffer.view());
    }

    ExpressionReader m_reader{*context};
    ExpressionWriter m_writer{*context};
};

TEST_F(ExpressionWriterTest, keysStandInOrderAndDefaultsAreLeftOut) {
    EXPECT_EQ(
        rewrittenNode(R"({"noVar":false,"negated":false,"in":["V8","V6"],"of":"Bus","option":"Engine"})"),
        R"({"option":"Engine","of":"Bus","in":["V8","V6"]})");
    EXPECT_EQ(rewrittenNode(R"({"noVar":true,"negated":true,"in":[],"selection":"Package"})"),
              R"({"selection":"Package","of":"Truck","in":[],"negated":true,"noVar":true})");
    EXPECT_EQ(rewrittenNode(R"({"noVar":true,"negated":true,"date":[]})"),
              R"({"date":[],"negated":true,"noVar":true})");
    EXPECT_EQ(rewrittenNode(R"({"negated":true,"of":"Bus","eff":"ECO-1"})"),
              R"({"eff":"ECO-1","of":"Bus","negated":true})");
    EXPECT_EQ(rewrittenNode(R"({"negated":false,"eff":"ECO-1"})"), R"({"eff":"ECO-1"})");
}

TEST_F(ExpressionWriterTest, ofIsWrittenWhereTheVariableHasAHolder) {
    EXPECT_EQ(rewrittenNode(R"({"option":"Engine","in":[]})"), R"({"option":"Engine","of":"Truck","in":[]})");
    EXPECT_EQ(rewrittenNode(R"({"option":"Loose","of":null,"in":[]})"), R"({"option":"Loose","in":[]})");
    EXPECT_EQ(rewrittenNode(R"({"option":null,"in":[]})"), R"({"option":null,"in":[]})");
    // The name alone would be taken for that of Bus, were it not ambiguous.
    EXPECT_EQ(rewrittenNode(R"({"option":"Seats","of":null,"in":["Many"]})"),
              R"({"option":"Seats","of":null,"in":["Many"]})");
}

TEST_F(ExpressionWriterTest, intervals) {
    EXPECT_EQ(
        rewrittenNode(R"({"serial":"Unit","in":[{"from":1,"to":2,"toIncl":true,"fromIncl":true},[null,null],
                               [-2000000000,2000000000],[2000000000,-2000000000]]})"),
        R"({"serial":"Unit","of":"Truck","in":[[1,2],[null,null],[null,null],[2000000000,-2000000000]]})");
    EXPECT_EQ(
        rewrittenNode(
            R"({"serial":"Unit","in":[{"toIncl":false,"to":2,"from":1},{"fromIncl":false,"to":null,"from":1},
                               {"fromIncl":false,"toIncl":false,"to":2,"from":null}]})"),
        R"({"serial":"Unit","of":"Truck","in":[{"from":1,"to":2,"toIncl":false},{"from":1,"to":null,"fromIncl":false},)"
        R"({"from":null,"to":2,"fromIncl":false,"toIncl":false}]})");
}

TEST_F(ExpressionWriterTest, selections) {
    EXPECT_EQ(
        rewrittenNode(
            R"({"treeSeries":"Line","in":[{"singleIncl":true,"single":5},{"to":7,"from":5},{"from":7},{"to":7},
                               {"singleIncl":false,"single":5},{"toIncl":false,"fromIncl":false,"to":7,"from":5}]})"),
        R"({"treeSeries":"Line","of":"Truck","in":[{"single":5},{"from":5,"to":7},{"from":7},{"to":7},)"
        R"({"single":5,"singleIncl":false},{"from":5,"to":7,"fromIncl":false,"toIncl":false}]})");
}

TEST_F(ExpressionWriterTest, selectionWithSeveralEndsIsWrittenAsTheWaysToEach) {
    const auto& line = *QueltEeTreeSeriesVar::cast(context->findDictionary("Truck")->getVariable("Line"));
    const auto element = [&line](unsigned number) {
        QueltEeTreeSeriesElement* found = nullptr;
        line.getElement(number, found);
        return found;
    };
    QueltEeTreeSeriesSelection selection;
    selection.setFromBound({element(1), 1});
    selection.addToBound({element(7), 1});
    selection.addToBound({element(6), 0});
    QueltEeTreeSeriesEff effectivity(line);
    effectivity.addSelection(selection);
    TextBuffer buffer;
    JsonWriter writer(buffer);
    CriterionWriter(*context).write(writer, effectivity);
    EXPECT_EQ(
        buffer.view(),
        R"({"treeSeries":"Line","of":"Truck","in":[{"from":1,"to":7},{"from":1,"to":6,"toIncl":false}]})");
}

TEST_F(ExpressionWriterTest, datesAreWrittenAsShortAsTheyAreExact) {
    EXPECT_EQ(
        rewrittenNode(
            R"({"date":[["2020-01-01T00:00:00Z","2020-01-01T00:00:01Z"],[null,"0000-01-01"],["9999-12-31",null]]})"),
        R"({"date":[["2020-01-01","2020-01-01T00:00:01Z"],[null,"0000-01-01"],["9999-12-31",null]]})");
}

TEST_F(ExpressionWriterTest, nodes) {
    for (const char* const node :
         {"true", "false", R"({"and":[]})", R"({"or":[true,{"and":[false,{"or":[]}]},true]})",
          R"({"not":null})", R"({"not":{"not":true}})", R"({"notDomain":{"not":null}})",
          R"({"restriction":"\"a\\b\u0001"})", R"({"empty":true})",
          R"({"and":[{"not":{"or":[true]}},{"notDomain":false},{"empty":true}]})"}) {
        EXPECT_EQ(rewrittenNode(node), node);
    }
}

TEST_F(ExpressionWriterTest, missingChildrenAreNull) {
    TextBuffer buffer;
    JsonWriter writer(buffer);
    ExpressionWriter expressionWriter(*context);
    writer.beginArray();
    expressionWriter.writeNode(writer, nullptr);
    expressionWriter.writeNode(writer, std::make_unique<QueltEeNodeRef>().get());
    writer.endArray();
    EXPECT_EQ(buffer.view(), "[null,null]");
}

TEST_F(ExpressionWriterTest, lists) {
    EXPECT_EQ(rewrittenList(R"({"mode":1,"named":[],"list":[]})"), R"({"list":[]})");
    EXPECT_EQ(rewrittenList(R"({"mode":0,"list":null})"), R"({"list":null,"mode":0})");
    EXPECT_EQ(rewrittenList(R"({"mode":2,"named":["EFF-7","ECO-1"],"list":[{"date":[]}]})"),
              R"({"list":[{"date":[]}],"named":["EFF-7","ECO-1"],"mode":2})");
}

TEST_F(ExpressionWriterTest, filters) {
    EXPECT_EQ(rewrittenMultiModel(R"({"named":[],"criteria":[],"mode":0,"kind":"filter"})"),
              R"({"kind":"filter","criteria":[]})");
    EXPECT_EQ(
        rewrittenMultiModel(
            R"({"named":["ECO-1"],"criteria":[{"date":[]}],"mode":1,"dictionary":"Bus","kind":"filter"})"),
        R"({"kind":"filter","dictionary":"Bus","mode":1,"criteria":[{"date":[]}],"named":["ECO-1"]})");
}

TEST_F(ExpressionWriterTest, filterWithoutListHasNoCriteria) {
    TextBuffer buffer;
    JsonWriter writer(buffer);
    ExpressionWriter(*context).writeMultiModel(writer, QueltEeFilterExpression(nullptr, nullptr));
    EXPECT_EQ(buffer.view(), R"({"kind":"filter","criteria":[]})");
}

TEST_F(ExpressionWriterTest, multiModelExpressions) {
    EXPECT_EQ(rewrittenMultiModel(R"({"criteria":[],"kind":"change"})"), R"({"kind":"change"})");
    EXPECT_EQ(rewrittenMultiModel(R"({"operations":[],"kind":"effectivity"})"), R"({"kind":"effectivity"})");
    EXPECT_EQ(rewrittenMultiModel(R"({"criteria":[{"own":true,"dictionary":"Bus"},
                                      {"own":false,"inherited":true,"dictionary":"Truck"}],"kind":"change"})"),
              R"({"kind":"change","criteria":[{"dictionary":"Bus","own":true},)"
              R"({"dictionary":"Truck","inherited":true,"own":false}]})");
    EXPECT_EQ(
        rewrittenMultiModel(
            R"({"operations":[{"effectivity":"ECO-1","kind":1},{"effectivity":"ECO-2","kind":0}],"global":{"not":null},"kind":"effectivity"})"),
        R"({"kind":"effectivity","global":{"not":null},"operations":[{"kind":1,"effectivity":"ECO-1"},{"kind":0,"effectivity":"ECO-2"}]})");
}

TEST(ContextWriterTest, keysStandInOrderAndDefaultsAreLeftOut) {
    const auto rewritten = [](const char* json) { return test::written(*contextOf(json)); };
    EXPECT_EQ(
        rewritten(
            R"({"effectivities": [], "variables": [], "dictionaries": [], "format": "quelt-context/1"})"),
        R"({"format":"quelt-context/1"})");
    EXPECT_EQ(
        rewritten(R"({"format": "quelt-context/1", "dictionaries": [{"variables": [
                {"revisions": [], "externalType": 12, "guid": "00000000-0000-4000-8000-00000000000A", "name": "S", "kind": "serial"},
                {"revisions": [{"seq": 7, "rev": "b"}, {"seq": 5, "rev": "a"}, {"seq": 7, "rev": "c"}], "externalType": -1,
                 "guid": "00000000-0000-4000-8000-00000000000b", "name": "T", "kind": "serial"}],
                "guid": "00000000-0000-4000-8000-000000000001", "name": "D"}]})"),
        R"({"format":"quelt-context/1","dictionaries":[{"name":"D","guid":"00000000-0000-4000-8000-000000000001","variables":[)"
        R"({"kind":"serial","name":"S","guid":"00000000-0000-4000-8000-00000000000a","externalType":12,"revisions":[]},)"
        R"({"kind":"serial","name":"T","guid":"00000000-0000-4000-8000-00000000000b","externalType":-1,)"
        R"("revisions":[{"rev":"c","seq":7},{"rev":"a","seq":5}]}]}]})");
    EXPECT_EQ(
        rewritten(
            R"({"format": "quelt-context/1", "dictionaries": [{"name": "D", "guid": "00000000-0000-4000-8000-000000000001"}],
                "effectivities": [{"inheritedIn": ["D"], "expression": {"tree": true}, "guid": "00000000-0000-4000-8000-000000000002",
                "name": "E", "kind": "basic"}, {"inheritedIn": [], "guid": "00000000-0000-4000-8000-000000000003", "name": "F", "kind": "basic"}]})"),
        R"({"format":"quelt-context/1","dictionaries":[{"name":"D","guid":"00000000-0000-4000-8000-000000000001"}],)"
        R"("effectivities":[{"kind":"basic","name":"E","guid":"00000000-0000-4000-8000-000000000002",)"
        R"("expression":{"tree":true},"inheritedIn":["D"]},)"
        R"({"kind":"basic","name":"F","guid":"00000000-0000-4000-8000-000000000003"}]})");
}

} // namespace
} // namespace quelt::host
