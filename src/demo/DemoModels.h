#pragma once

#include "demo/DemoPlan.h"

/// All models of the demo company; their shares add up to 1000. An ordinary purchase comes first.
const std::vector<DemoModel> &DemoModels();
