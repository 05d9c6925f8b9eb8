#pragma once

// Item identifier lists, the special folders among them, and shell links.
#include <core/IItemIdList.h>
#include <core/ItemIdList.h>
#include <core/ItemIdListFunctions.h>
#include <core/ItemIdListHelper.h>
#include <core/ItemIdListHelperThreadPool.h>
#include <core/PathmereError.h>
#include <core/ShellLinkHelper.h>
#include <core/SpecialFolders.h>
