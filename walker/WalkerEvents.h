#pragma once

#include <framework/Event.h>

#include <string>

namespace kiv {

struct IItemIdListCollection;
struct TBeforeCommandEventArgs;

/// A command was chosen from a context menu. Its verb, and whether it may run.
using TOnContextMenuSelectEvent = TEvent<const std::wstring& /*pVerb*/, bool& /*pAllow*/>;
/// A command of the shell is about to run on some objects.
using TOnBeforeShellCommand = TEvent<TPersistent* /*pSender*/, const std::wstring& /*pVerb*/, bool& /*pAllow*/,
                                     IItemIdListCollection* /*pItems*/>;
/// A command is about to run; the record tells all of it, and may change it.
using TOnBeforeCommand = TEvent<TPersistent* /*pSender*/, TBeforeCommandEventArgs& /*pArgs*/>;

} // namespace kiv
