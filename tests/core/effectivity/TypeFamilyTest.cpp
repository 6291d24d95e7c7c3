#include <gtest/gtest.h>

#include "core/dictionary/TestTools.h"
#include "dictionary/QueltEeModelDico.h"
#include "dictionary/QueltEeNamedValueVar.h"
#include "dictionary/QueltEeSerialVar.h"
#include "dictionary/QueltEeTreeSeriesVar.h"
#include "effectivity/QueltEeDateEff.h"
#include "effectivity/QueltEeNamedValueEff.h"
#include "effectivity/QueltEeSerialEff.h"
#include "effectivity/QueltEeTreeSeriesEff.h"

#include <memory>
#include <string_view>
#include <vector>

// The type registry on the classes of dictionaries and effectivities: each object against each class.

namespace {

using ExternalType = QueltEeSerialVar::SerialExternalType;

std::vector<std::unique_ptr<QueltInObject>> oneOfEach() {
    std::vector<std::unique_ptr<QueltInObject>> objects;
    objects.push_back(std::make_unique<QueltEeDicoObject>("a", guidOf(1)));
    objects.push_back(std::make_unique<QueltEeVariable>("a", guidOf(1)));
    objects.push_back(std::make_unique<QueltEeModelDico>("a", guidOf(1)));
    objects.push_back(std::make_unique<QueltEeNamedValueVar>("a", guidOf(1)));
    objects.push_back(std::make_unique<QueltEeCatOptionVar>("a", guidOf(1)));
    objects.push_back(std::make_unique<QueltEeSelectionVar>("a", guidOf(1)));
    objects.push_back(std::make_unique<QueltEeSerialVar>("a", guidOf(1), ExternalType::unitCounter));
    objects.push_back(std::make_unique<QueltEeSerialVarValue>("a", 1U));
    auto series = std::make_unique<QueltEeTreeSeriesVar>("a", guidOf(1), 18U);
    objects.push_back(std::make_unique<QueltEeTreeSeriesEff>(*series));
    objects.push_back(std::move(series));
    objects.push_back(
        std::make_unique<QueltEeTreeSeriesSelectionBound>(nullptr, static_cast<unsigned char>(1)));
    objects.push_back(std::make_unique<QueltEeTreeSelection>());
    objects.push_back(std::make_unique<QueltEeTreeSeriesSelection>());
    objects.push_back(std::make_unique<QueltEeDateEff>());
    objects.push_back(std::make_unique<QueltEeOptionEff>(nullptr));
    objects.push_back(std::make_unique<QueltEeSelectionEff>(nullptr));
    objects.push_back(std::make_unique<QueltEeSerialEff>(nullptr));
    return objects;
}

template <class Class>
class TypeFamilyTest : public testing::Test {};

using Classes =
    testing::Types<QueltEeDicoObject, QueltEeVariable, QueltEeModelDico, QueltEeNamedValueVar,
                   QueltEeCatOptionVar, QueltEeSelectionVar, QueltEeSerialVar, QueltEeSerialVarValue,
                   QueltEeTreeSeriesElement, QueltEeTreeSeriesVar, QueltEeTreeSeriesSelectionBound,
                   QueltEeTreeSelection, QueltEeTreeSeriesSelection, QueltEeVarEff, QueltEeDateEff,
                   QueltEeNamedValueEff, QueltEeOptionEff, QueltEeSelectionEff, QueltEeSerialEff,
                   QueltEeTreeBaseEff, QueltEeTreeSeriesEff>;
TYPED_TEST_SUITE(TypeFamilyTest, Classes);

TYPED_TEST(TypeFamilyTest, CastsAsTheLanguageDoes) {
    for (const std::unique_ptr<QueltInObject>& object : oneOfEach()) {
        TypeParam* const expected = dynamic_cast<TypeParam*>(object.get());
        EXPECT_EQ(TypeParam::cast(*object), expected) << object->dType()->getName();
        EXPECT_EQ(TypeParam::isObjectOfThisType(*object) != 0, expected != nullptr)
            << object->dType()->getName();
        const QueltInObject& constant = *object;
        EXPECT_EQ(TypeParam::cast(constant), expected) << object->dType()->getName();
    }
}

TYPED_TEST(TypeFamilyTest, BearsItsName) {
    EXPECT_EQ(std::string_view(TypeParam::sType()->getName()), std::string_view(TypeParam::s_className));
    EXPECT_EQ(TypeParam::sType(), TypeParam::sType());
}

TEST(TypeFamilyClassesTest, KnowsTheDynamicClass) {
    QueltEeTreeSeriesVar series("a", guidOf(1), 18);
    ASSERT_EQ(series.addRootElement(1), 0);
    const QueltInObject& element = *series.getRootTreeSeriesElement();
    EXPECT_EQ(element.dType(), QueltEeTreeSeriesElement::sType());
    EXPECT_NE(QueltEeTreeSeriesElement::cast(element), nullptr);
    EXPECT_EQ(QueltEeTreeSeriesVar::cast(element), nullptr);
    const std::unique_ptr<QueltEeVarEff> clone(QueltEeTreeSeriesEff(series).createVarEffClone());
    EXPECT_EQ(clone->dType(), QueltEeTreeSeriesEff::sType());
    EXPECT_EQ(clone->dType()->getParent(), QueltEeTreeBaseEff::sType());
    EXPECT_EQ(QueltEeTreeBaseEff::sType()->getParent(), QueltEeVarEff::sType());
    EXPECT_EQ(QueltEeVarEff::sType()->getParent(), QueltInObject::sType());
}

} // namespace
