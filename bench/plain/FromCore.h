#pragma once

#include "plain/Plain.h"

#include <string>

class QueltEeExpressionContext;
class QueltEeNode;
class QueltQmSpecList;

namespace plain {

// What both programs work on, made once, and their results as the same text.

Context contextFrom(const QueltEeExpressionContext& context);
std::unique_ptr<Node> nodeFrom(const QueltEeNode& node);
List listFrom(const QueltQmSpecList& list);

std::string describe(const Expression& expression);
std::string describe(const Filters& filters);

} // namespace plain
