// Reading what was written gives an equal object.

#include "host/support/RandomContext.h"
#include "host/support/Samples.h"
#include "host/support/StructureDump.h"
#include "interchange/ContextWriter.h"
#include "interchange/ExpressionReader.h"
#include "interchange/ExpressionWriter.h"
#include "interchange/RecordReader.h"

#include <gtest/gtest.h>

namespace quelt::host {
namespace {

using test::contextOf;
using test::dump;
using test::Padded;
using test::RandomContext;
using test::repeated;
using test::sampleContext;

class RoundTripTest : public testing::TestWithParam<unsigned> {
protected:
    /// What `write` writes with a writer for the random context.
    template <class Write>
    std::string written(Write write) {
        TextBuffer buffer;
        JsonWriter writer(buffer);
        ExpressionWriter expressionWriter(random.context());
        write(writer, expressionWriter);
        return std::string(buffer.view());
    }

    RandomContext random{GetParam()};
};

TEST_P(RoundTripTest, contexts) {
    const std::string text = test::written(random.context());
    const std::unique_ptr<LoadedContext> read = contextOf(text);
    ASSERT_EQ(dump(*read), dump(random.context())) << text;
    EXPECT_EQ(test::written(*read), text);
}

TEST_P(RoundTripTest, records) {
    JsonParser parser;
    const RecordReader reader(random.context());
    for (int number = 0; number < 20; ++number) {
        const std::unique_ptr<QueltEeGenericExpression> expression = random.genericExpression();
        const std::string text = written([&](JsonWriter& writer, ExpressionWriter& expressionWriter) {
            writer.beginObject();
            writer.key(Key::id);
            writer.text("x");
            expressionWriter.writeBody(writer, *expression);
            writer.endObject();
        });
        const Padded padded(text);
        const Record record = reader.read(parser.parse(padded.text()));
        ASSERT_EQ(dump(*record.expression), dump(*expression)) << text;
    }
}

TEST_P(RoundTripTest, convertedExpressions) {
    JsonParser parser;
    const ExpressionReader reader(random.context());
    for (int number = 0; number < 20; ++number) {
        const std::unique_ptr<QueltEeExpression> expression = random.multiModelExpression();
        const std::string text = written([&](JsonWriter& writer, ExpressionWriter& expressionWriter) {
            expressionWriter.writeMultiModel(writer, *expression);
        });
        const Padded padded(text);
        const Value value(parser.parse(padded.text()), Place());
        ASSERT_EQ(dump(*reader.readMultiModel(value)), dump(*expression)) << text;
    }
}

INSTANTIATE_TEST_SUITE_P(seeds, RoundTripTest, testing::Range(0U, 300U));

TEST(RoundTripSampleTest, sampleContext) {
    const std::unique_ptr<LoadedContext> context = contextOf(sampleContext());
    const std::unique_ptr<LoadedContext> read = contextOf(test::written(*context));
    EXPECT_EQ(dump(*read), dump(*context));
}

TEST(RoundTripSampleTest, deepestTree) {
    const std::unique_ptr<LoadedContext> context = contextOf(sampleContext());
    const std::string tree = repeated(R"({"and":[{"not":)", 499) + R"({"or":[false]})" + repeated("}]}", 499);
    const std::string line = R"({"id":"x","tree":)" + tree + "}"; // 2 * 499 + 2 = 1000 levels
    JsonParser parser;
    const Padded padded(line);
    const Record record = RecordReader(*context).read(parser.parse(padded.text()));
    TextBuffer buffer;
    JsonWriter writer(buffer);
    ExpressionWriter(*context).writeNode(writer, record.expression->GetNodeRef());
    EXPECT_EQ(buffer.view(), tree);
}

} // namespace
} // namespace quelt::host
