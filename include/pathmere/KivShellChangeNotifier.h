#pragma once

// The change notifier: what changes in folders and other objects of the namespace.
#include <notification/ChangeNotifier.h>
#include <notification/ChangeSourceKind.h>
#include <notification/NotificationEvent.h>
