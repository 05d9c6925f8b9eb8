#pragma once

// The virtual list view, its rows and columns.
#include <listview/CustomListView.h>
#include <listview/Published.h>
