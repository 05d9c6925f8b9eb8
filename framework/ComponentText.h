#pragma once

#include <framework/Component.h>
#include <platform/Export.h>

#include <memory>
#include <string>
#include <string_view>

namespace kiv {

/// How deep components and objects may be nested in one another in a text, the outermost counted.
inline constexpr int MaxComponentTextDepth = 64;

/// The text form of a component and of all that it owns, however deep: one component's name, class, properties that
/// differ from their defaults, and owned components, inside braces. docs/framework.md has the grammar. Every text
/// value survives, lone surrogates and control characters included; the text itself is free of both, so it may be
/// kept as UTF-8.
///
/// Raises EPropertyError for a component whose class isn't registered, for a value of an enumeration that has no name,
/// for a reference to a component that has no name or isn't part of what is saved, and for nesting beyond
/// MaxComponentTextDepth.
KIV_EXPORT std::wstring SaveComponentText(TComponent& pRoot);

/// Makes the components of a text. First all components and their properties in the order of the text, with csLoading
/// set; then the references between them; then one call of Loaded for each component.
///
/// Raises EParserError where the text isn't well formed, and EPropertyError for an unknown class or property, a value
/// of the wrong type or out of range, a read-only property, a reference to what isn't there, and for what a setter
/// raises (but EAbort and std::bad_alloc, which pass); both say the line. EComponentError if the outermost component
/// was destroyed by a Loaded. What a Loaded raises passes. Nothing is left over then.
[[nodiscard]] KIV_EXPORT std::unique_ptr<TComponent> LoadComponentText(std::wstring_view pText);

/// The same for a component that stands: it gets the properties and, beside those it has, the components of the text.
/// The text must name its class, or one that it inherits from. On an error the components made so far are removed,
/// unannounced but to those that asked for it by FreeNotification; the root's own properties keep what they were given.
KIV_EXPORT void LoadComponentText(std::wstring_view pText, TComponent& pRoot);

} // namespace kiv
