#pragma once

#include <core/ShellFolderKind.h>
#include <framework/PropertyValue.h>

#include <vector>

namespace kiv {

/// So that components can publish properties of this type.
template <>
struct TEnumNames<TKivShellFolder> {
  /// All values with the names that they have in code.
  struct TValues {
    using TName = TEnumName<TKivShellFolder>;

    auto begin() const { return All().begin(); }
    auto end() const { return All().end(); }

  private:
    static const std::vector<TName>& All() {
      static const std::vector<TName> all = [] {
        std::vector<TName> made;
        for (int i = 0; i < ShellFolderCount; ++i) {
          const auto folder = static_cast<TKivShellFolder>(i);
          made.push_back({folder, ShellFolderName(folder).data()});
        }
        return made;
      }();
      return all;
    }
  };
  static constexpr TValues Values{};
};

} // namespace kiv
