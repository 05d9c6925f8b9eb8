#pragma once

// Stepping through the objects of a folder.
#include <core/FolderEnumerator.h>
#include <core/FolderSource.h>
#include <core/ObjectFacts.h>
#include <core/ShellFolderSource.h>
