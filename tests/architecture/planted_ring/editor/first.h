#pragma once
#include "editor/second.h"
