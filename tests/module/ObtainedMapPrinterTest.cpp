#include "ObtainedMapPrinter.h"

#include "module/support/Captured.h"

#include "expression/QueltEeLeaves.h"
#include "expression/QueltEeMultiModelExpression.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInMap.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using quelt::test::CapturedErrors;
using quelt::test::CapturedTrace;
using Messages = std::vector<std::string>;

const quelt::MigrationTrace s_trace("ObtainedMapPrinterTest");

/// Holds what a map never lets in.
class MapWith : public QueltInMap {
public:
    MapWith(QueltInObjectVal* key, QueltInObject* value)
        : QueltInMap(QueltInObjectVal::sType(), QueltInObject::sType()) {
        m_entries.push_back({key, value});
    }
};

TEST(ObtainedMapPrinter, printsDomainsAndExpressions) {
    QueltEeEffectivityExpression constant;
    constant.setGlobalCriteria((new QueltEeTrue)->getNodeRef());
    const QueltEeChangeExpression empty;
    QueltInMap map(QueltInIntHolder::sType(), QueltEeMultiModelExpression::sType());
    map.Put(QueltInIntHolder(3), constant);
    map.Put(QueltInIntHolder(4000000000U), empty);
    const CapturedTrace captured;
    EXPECT_EQ(quelt::printObtainedMap(s_trace, map), S_OK);
    EXPECT_EQ(captured.texts(), (Messages{"Obtained map : ", "Domain ID : 3", "MultiModelExpression : ",
                                          "effectivity(global: TRUE)", "Domain ID : 4000000000",
                                          "MultiModelExpression : ", "change()", "End print"}));
}

TEST(ObtainedMapPrinter, reportsWhatCannotBePrinted) {
    struct Row {
        QueltInObjectVal* key;
        QueltInObject* value;
        Messages messages;
    };
    QueltEeChangeExpression expression;
    QueltInString foreign("foreign");
    const Messages upToValue{"Obtained map : ", "Domain ID : 2"};
    const auto followedBy = [](Messages messages, std::initializer_list<std::string> more) {
        messages.insert(messages.end(), more);
        return messages;
    };
    const Row rows[] = {{nullptr, &expression, {"Obtained map : ", "ERROR"}},
                        {new QueltInString("2"), &expression, {"Obtained map : ", "ERROR : error"}},
                        {new QueltInIntHolder(2), nullptr, followedBy(upToValue, {"ERROR"})},
                        {new QueltInIntHolder(2), &foreign,
                         followedBy(upToValue, {"MultiModelExpression : ", "ERROR : error"})}};
    for (const Row& row : rows) {
        const MapWith map(row.key, row.value);
        const CapturedTrace captured;
        EXPECT_EQ(quelt::printObtainedMap(s_trace, map), E_FAIL);
        EXPECT_EQ(captured.texts(), row.messages);
    }
}

} // namespace
