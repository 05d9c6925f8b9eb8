#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kiv::test {

/// What the methods of a folder may be told to do.
enum class TDeed {
  Crash,  ///< access violation
  Own,    ///< access violation that it handles itself
  Fail,   ///< E_ACCESSDENIED
  Empty,  ///< success without a result
  Repeat, ///< a step gives the object again that it has given
  Wait,   ///< until the test lets it go on (see Extension.h)
  Slow,   ///< some milliseconds
};
enum class TMethod { Next, EnumObjects, Bind, Parse, Names, Attributes, Compare, Details, Objects, Storage };

struct TAct {
  TDeed deed = TDeed::Crash;
  TMethod method = TMethod::Next;
  /// Of a walk, counted from 1: the step it happens in; Repeat and Slow from there on. Other methods do it always.
  std::size_t step = 0;
  /// How often a step crashes before it is made.
  int times = 1;
};

/// What a folder does, by its name: parts with ", " between them.
///
/// - `5 objects`: that many files
/// - `3 levels`: a folder that does the same, with one level less below it
/// - `crash next 3`, `crash next 3 twice`, `own next 1`, `fail next 2`, `empty next 2`, `repeat next 2`, `wait next 1`,
///   `slow next 1`: in a step of a walk
/// - `fail enum`, `crash parse`, `crash names`: whenever the method is called, for what lies in the folder
/// - `fail bind`: whenever the folder itself is bound
/// - `wait attributes`: whenever those of the folder or of something in it are asked for
/// - `wait compare`, `wait storage`: whenever the folder itself is compared with another, or its storage is bound (and
///   it says that it has one)
/// - `wait details`, `wait ui` (icons and menus, IShellFolder::GetUIObjectOf): for what lies in the folder
/// - `no folder2`: it is an IShellFolder and nothing more
struct TScript {
  std::size_t objects = 0;
  std::size_t levels = 0;
  bool offersFolder2 = true;
  std::vector<TAct> acts;

  /// Empty if the text isn't a script: there is no such folder then.
  static std::optional<TScript> FromName(std::wstring_view pName);
  /// What is done whenever the method is called.
  std::optional<TDeed> DeedOf(TMethod pMethod) const;
};

/// As it is called in a script.
std::wstring NameOf(TMethod pMethod);

} // namespace kiv::test
