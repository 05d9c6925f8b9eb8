// What a lower room must not do, compiled with its include roots.
#include <core/FolderObject.h>
