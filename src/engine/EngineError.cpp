#include "engine/EngineError.h"
