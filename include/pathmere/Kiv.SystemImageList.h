#pragma once

// The icons of files and folders as image lists.
#include <viewstate/SystemImageList.h>
#include <viewstate/SystemImages.h>
