#pragma once

// The files and folders that check boxes select, and lists of paths.
#include <coordination/KivStack.h>
#include <coordination/SelectionList.h>
#include <core/PathList.h>
