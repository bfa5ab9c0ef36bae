// Moved to tests/support so that every test program can put a machine in place.
#pragma once
#include "support/reg_machine.h"
