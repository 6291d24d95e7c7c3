#pragma once

#include "dictionary/QueltEeDicoObject.h"

class QueltEeModelDico;

class QueltEeVariable;
extern template class QUELT_CORE_API QueltInTyped<QueltEeVariable, QueltEeDicoObject>;

/// A feature of a configurable product as one dictionary knows it. The same feature in two dictionaries is
/// two variables with the same GUID.
class QUELT_CORE_API QueltEeVariable : public QueltInTyped<QueltEeVariable, QueltEeDicoObject> {
public:
    static constexpr const char* s_className = "QueltEeVariable";

    using QueltInTyped::QueltInTyped;
    /// Nameless, with the empty GUID, held by no dictionary.
    QueltEeVariable() = default;
    QueltEeVariable(const QueltEeVariable&) = delete;
    QueltEeVariable& operator=(const QueltEeVariable&) = delete;

    /// The dictionary that holds the variable, or null.
    [[nodiscard]] virtual QueltEeModelDico* getHolderDico() const;

private:
    friend class QueltEeModelDico;
    QueltEeModelDico* m_pHolder = nullptr;
};
