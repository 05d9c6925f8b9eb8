#include "PoolFixture.h"
