#include "support/RichContext.h"

std::string_view fixedContext();

std::string_view fixedContext() {
    return quelt::host::fuzz::richContextText();
}
