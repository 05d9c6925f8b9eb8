#pragma once

// Stands in platform, whose fill-ins are such objects.
#include <platform/InterfacedObject.h>
