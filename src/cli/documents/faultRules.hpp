#pragma once

#include <vector>

#include "libtarn/model/validation/Diagnosis.hpp"
#include "libtarn/util/XmlCheck.hpp"
#include "output/Finding.hpp"

namespace tarn {

/// Returns the rule that such a fault breaks.
Rule ruleOf(libtarn::model::validation::Finding::Kind kind);
/// Returns the rule that such a fault breaks.
Rule ruleOf(libtarn::util::XmlFault::Kind kind);
/// Returns the rules that ruleOf() returns, each once.
std::vector<Rule> allRules();

}  // namespace tarn
