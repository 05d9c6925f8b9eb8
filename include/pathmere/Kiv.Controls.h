#pragma once

// Windows: forms, panels, edits, buttons, menus, hints and timers, in any host's window.
#include <forms/CheckListBox.h>
#include <forms/CustomControl.h>
#include <forms/ExtControls.h>
#include <forms/Form.h>
#include <forms/Hint.h>
#include <forms/PopupMenu.h>
#include <forms/PreTranslate.h>
#include <forms/Published.h>
#include <forms/StdControls.h>
#include <forms/Timer.h>
#include <framework/Application.h>
#include <framework/Screen.h>
