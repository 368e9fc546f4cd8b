#include "model_pommetparam.h"

int Model_PommetParam::gOledLength = 0;
