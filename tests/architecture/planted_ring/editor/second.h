#pragma once
#include "foundation/base.h"
#include "editor/third.h"
