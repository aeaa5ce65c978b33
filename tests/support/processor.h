#pragma once

#include "support/machine.h"
