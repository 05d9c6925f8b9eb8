#pragma once

// What keeps the controls of a group in step: the link, its history, and what controls and link know of each other.
#include <coordination/PidlHistory.h>
#include <coordination/ShellControl.h>
#include <coordination/ShellLink.h>
#include <core/BaseComponent.h>
