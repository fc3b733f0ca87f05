#pragma once
#include "editor/third.h"
#include "foundation/base.h"
