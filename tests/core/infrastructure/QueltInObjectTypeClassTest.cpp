#include "core/infrastructure/OnThreads.h"
#include "core/infrastructure/SampleObjects.h"

#include "infrastructure/QueltInGuid.h"
#include "infrastructure/QueltInIntHolder.h"
#include "infrastructure/QueltInLinkList.h"
#include "infrastructure/QueltInList.h"
#include "infrastructure/QueltInListVal.h"
#include "infrastructure/QueltInMap.h"
#include "infrastructure/QueltInMapVal.h"
#include "infrastructure/QueltInSerialInterval.h"
#include "infrastructure/QueltInSet.h"
#include "infrastructure/QueltInTypedDefinition.h"

#include <initializer_list>
#include <memory>
#include <set>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

/// A chain of classes, each derived from the one before; all of the same name, which must not matter.
template <int Depth>
class Derived : public QueltInTyped<Derived<Depth>, Derived<Depth - 1>> {
public:
    static constexpr const char* s_className = "Derived";
};
template <>
class Derived<0> : public QueltInTyped<Derived<0>, QueltInObject> {
public:
    static constexpr const char* s_className = "Derived";
};

template <int... Depths>
std::vector<std::unique_ptr<QueltInObject>> chain(std::integer_sequence<int, Depths...> /*depths*/) {
    std::vector<std::unique_ptr<QueltInObject>> objects;
    (objects.push_back(std::make_unique<Derived<Depths>>()), ...);
    return objects;
}

/// A class that nobody asks for before its test.
class Late : public QueltInTyped<Late, QueltInObject> {
public:
    static constexpr const char* s_className = "Late";
};

/// A spare part that says of itself what it is told; of a class that is not registered.
class Masked : public SparePart {
public:
    QueltInObjectTypeClass* dType() const override { return m_mask; }
    QueltInObjectTypeClass* m_mask = SparePart::sType();
};

struct Enclosing {
    class Nested : public QueltInTyped<Nested, QueltInObject> {
    public:
        static constexpr const char* s_className = "Enclosing::Nested";
    };
};

} // namespace

TEST(QueltInObjectTypeClass, KnowsNameAndParent) {
    EXPECT_STREQ(QueltInObject::sType()->getName(), "QueltInObject");
    EXPECT_EQ(QueltInObject::sType()->getParent(), nullptr);
    EXPECT_STREQ(QueltInObjectVal::sType()->getName(), "QueltInObjectVal");
    EXPECT_EQ(QueltInObjectVal::sType()->getParent(), QueltInObject::sType());
    EXPECT_STREQ(SparePart::sType()->getName(), "SparePart");
    EXPECT_EQ(SparePart::sType()->getParent(), Part::sType());
    EXPECT_STREQ(Enclosing::Nested::sType()->getName(), "Enclosing::Nested");
}

TEST(QueltInObjectTypeClass, ClassesOfTheFolderDeriveFromValues) {
    struct Case {
        QueltInObjectTypeClass* type;
        const char* name;
    };
    const Case cases[] = {
        {QueltInGuid::sType(), "QueltInGuid"},
        {QueltInIntHolder::sType(), "QueltInIntHolder"},
        {QueltInLinkList::sType(), "QueltInLinkList"},
        {QueltInList::sType(), "QueltInList"},
        {QueltInListVal::sType(), "QueltInListVal"},
        {QueltInMap::sType(), "QueltInMap"},
        {QueltInMapVal::sType(), "QueltInMapVal"},
        {QueltInSerialInterval::sType(), "QueltInSerialInterval"},
        {QueltInSet::sType(), "QueltInSet"},
        {QueltInString::sType(), "QueltInString"},
    };
    std::set<const QueltInObjectTypeClass*> different;
    for (const Case& one : cases) {
        EXPECT_STREQ(one.type->getName(), one.name);
        EXPECT_EQ(one.type->getParent(), QueltInObjectVal::sType()) << one.name;
        different.insert(one.type);
    }
    EXPECT_EQ(different.size(), std::size(cases));
}

TEST(QueltInObjectTypeClass, TellsDerivedFromUnrelated) {
    EXPECT_NE(SparePart::sType()->isa(SparePart::sType()), 0);
    EXPECT_NE(SparePart::sType()->isa(Part::sType()), 0);
    EXPECT_NE(SparePart::sType()->isa(QueltInObject::sType()), 0);
    EXPECT_EQ(Part::sType()->isa(SparePart::sType()), 0);
    EXPECT_EQ(Part::sType()->isa(QueltInObjectVal::sType()), 0);
    EXPECT_EQ(QueltInIntHolder::sType()->isa(QueltInString::sType()), 0);
    EXPECT_EQ(Part::sType()->isa(nullptr), 0);
}

TEST(QueltInObjectTypeClass, TypeOfAnObjectIsThatOfItsOwnClass) {
    const SparePart spare;
    const Part& asPart = spare;
    EXPECT_EQ(asPart.dType(), SparePart::sType());
    EXPECT_NE(Part::isObjectOfThisType(asPart), 0);
    EXPECT_NE(SparePart::isObjectOfThisType(asPart), 0);
    EXPECT_NE(QueltInObject::isObjectOfThisType(asPart), 0);
    EXPECT_EQ(QueltInObjectVal::isObjectOfThisType(asPart), 0);
}

TEST(QueltInObjectTypeClass, CastsDownAndRefuses) {
    SparePart spare;
    Part part;
    const QueltInObject& constantSpare = spare;
    EXPECT_EQ(SparePart::sType()->cast(static_cast<QueltInObject&>(spare)), &spare);
    EXPECT_EQ(SparePart::sType()->cast(constantSpare), &spare);
    EXPECT_EQ(SparePart::sType()->cast(static_cast<QueltInObject&>(part)), nullptr);
    EXPECT_EQ(SparePart::cast(static_cast<QueltInObject&>(spare)), &spare);
    EXPECT_EQ(SparePart::cast(constantSpare), &spare);
    EXPECT_EQ(SparePart::cast(static_cast<QueltInObject&>(part)), nullptr);
    EXPECT_EQ(SparePart::cast(static_cast<QueltInObject*>(&spare)), &spare);
    EXPECT_EQ(SparePart::cast(static_cast<QueltInObject*>(nullptr)), nullptr);
    EXPECT_EQ(SparePart::cast(static_cast<const QueltInObject*>(nullptr)), nullptr);
    EXPECT_EQ(QueltInObject::cast(static_cast<QueltInObject&>(part)), &part);
    EXPECT_EQ(QueltInObject::cast(constantSpare), &spare);
}

TEST(QueltInObjectTypeClass, ObjectsOfAnyDepthAreToldApart) {
    // Twenty classes deep is past the ancestors that a type class holds inside itself.
    const auto objects = chain(std::make_integer_sequence<int, 20>());
    for (std::size_t derived = 0; derived < objects.size(); ++derived) {
        const QueltInObjectTypeClass* const type = objects[derived]->dType();
        EXPECT_STREQ(type->getName(), "Derived");
        EXPECT_NE(type->isa(QueltInObject::sType()), 0);
        for (std::size_t base = 0; base < objects.size(); ++base) {
            EXPECT_EQ(type->isa(objects[base]->dType()) != 0, base <= derived) << derived << " isa " << base;
        }
        EXPECT_EQ(type->getParent(), derived == 0 ? QueltInObject::sType() : objects[derived - 1]->dType());
    }
}

TEST(QueltInObjectTypeClass, EveryAncestorStandsAtItsDepth) {
    const auto objects = chain(std::make_integer_sequence<int, 20>());
    for (std::size_t derived = 0; derived < objects.size(); ++derived) {
        const QueltInObjectTypeClass* const type = objects[derived]->dType();
        EXPECT_EQ(type->ancestorAt(0), QueltInObject::sType());
        for (std::size_t base = 0; base < objects.size(); ++base) {
            const QueltInObjectTypeClass* const expected = base <= derived ? objects[base]->dType() : nullptr;
            EXPECT_EQ(type->ancestorAt(static_cast<std::uint32_t>(base + 1)), expected)
                << derived << " at " << base + 1;
        }
        EXPECT_EQ(Derived<0>::cast(*objects[derived]), objects[derived].get());
        EXPECT_EQ(Derived<11>::cast(*objects[derived]) != nullptr, derived >= 11) << derived;
        EXPECT_EQ(Derived<15>::cast(*objects[derived]) != nullptr, derived >= 15) << derived;
    }
}

TEST(QueltInObjectTypeClass, TypesOfAnyDepthAreMadeAndReleased) {
    std::vector<std::unique_ptr<QueltInObjectTypeClass>> types;
    const QueltInObjectTypeClass* parent = nullptr;
    for (int depth = 0; depth < 30; ++depth) {
        types.emplace_back(QueltInObjectTypeClass::make("Made", parent));
        ASSERT_NE(types.back(), nullptr);
        EXPECT_EQ(types.back()->getParent(), parent);
        parent = types.back().get();
    }
    for (const auto& derived : types) {
        for (const auto& base : types) {
            EXPECT_EQ(derived->isa(base.get()) != 0, &base <= &derived);
        }
    }
}

TEST(QueltInObjectTypeClass, NamesAreNotCompared) {
    const QueltInObjectTypeClass twin(Part::sType()->getName(), QueltInObject::sType());
    EXPECT_EQ(twin.isa(Part::sType()), 0);
    EXPECT_EQ(Part::sType()->isa(&twin), 0);
    EXPECT_NE(twin.isa(&twin), 0);
}

TEST(QueltInObjectTypeClass, ThereIsOneAClassHoweverManyThreadsAskFirst) {
    std::vector<const QueltInObjectTypeClass*> seen(4);
    onThreads(4, [&seen](unsigned int number) { seen[number] = Late::sType(); });
    EXPECT_NE(seen.front(), nullptr);
    EXPECT_EQ(std::set(seen.begin(), seen.end()).size(), 1U);
}

TEST(QueltInObjectTypeClass, OwnerTakesNull) {
    const QueltInObjectTypeOwner empty(nullptr);
    const QueltInObjectTypeOwner full(QueltInObjectTypeClass::make("Passing", QueltInObject::sType()));
}

// Where classes lie in memory differs from run to run, and so do those that want one place; the first has it.
TEST(QueltInTypeTable, KnowsRegisteredClassesOnly) {
    const Part part;
    const SparePart spare;
    const QueltInGuid guid;
    const QueltInIntHolder number(1);
    const QueltInString text("text");
    const QueltInSet set(Part::sType());
    const QueltInMap map(QueltInIntHolder::sType(), Part::sType());
    int known = 0;
    for (const QueltInObject* const object :
         std::initializer_list<const QueltInObject*>{&part, &spare, &guid, &number, &text, &set, &map}) {
        const QueltInObjectTypeClass* const found = QueltInTypeTable::find(typeid(*object));
        EXPECT_TRUE(found == nullptr || found == object->dType()) << object->dType()->getName();
        known += found != nullptr ? 1 : 0;
    }
    EXPECT_GE(known, 4);
    const Masked masked;
    EXPECT_EQ(QueltInTypeTable::find(typeid(masked)), nullptr);
}

TEST(QueltInTypeTable, AnOverrideOfDTypeIsHeededEachTime) {
    Masked masked;
    QueltInObject& object = masked;
    EXPECT_NE(SparePart::isObjectOfThisType(object), 0);
    masked.m_mask = Part::sType();
    EXPECT_EQ(SparePart::isObjectOfThisType(object), 0);
    EXPECT_NE(Part::isObjectOfThisType(object), 0);
    EXPECT_EQ(SparePart::sType()->cast(object), nullptr);
    masked.m_mask = nullptr; // as where memory was exhausted at load
    EXPECT_EQ(Part::isObjectOfThisType(object), 0);
    EXPECT_EQ(Part::cast(object), nullptr);
    EXPECT_EQ(Part::sType()->cast(object), nullptr);
}

TEST(QueltInTypeTable, OwnersEnterAndRemove) {
    const Masked masked;
    const QueltInObject& object = masked;
    auto* const type = QueltInObjectTypeClass::make("Masked", SparePart::sType());
    {
        const QueltInObjectTypeOwner owner(type, &typeid(Masked));
        EXPECT_EQ(owner.get(), type);
        if (QueltInTypeTable::find(typeid(object)) == nullptr) {
            GTEST_SKIP() << "its place is another's";
        }
        EXPECT_EQ(QueltInTypeTable::find(typeid(object)), type);
        // A place that is taken stays whose it is.
        QueltInTypeTable::enter(typeid(Masked), *Part::sType());
        EXPECT_EQ(QueltInTypeTable::find(typeid(object)), type);
    }
    EXPECT_EQ(QueltInTypeTable::find(typeid(object)), nullptr);
    QueltInTypeTable::remove(typeid(Masked)); // once more does no harm
    EXPECT_EQ(quelt::typeOf(object), SparePart::sType());
}

TEST(QueltInObject, TextIsTheClassName) {
    const Enclosing::Nested nested;
    EXPECT_EQ(textOf(nested), "Enclosing::Nested");
}
