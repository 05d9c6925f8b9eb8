#include <platform/TypeName.h>

#include <platform/Text.h>

#if defined(__GNUG__)
#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#endif

namespace kiv {

namespace {

std::string ReadableName(const std::type_info& type) {
#if defined(__GNUG__)
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                    &std::free);
  if (name) return name.get();
#endif
  return type.name(); // readable already where the platform's compiler made it: "class kiv::TAsyncProcedure"
}

} // namespace

std::wstring UnqualifiedTypeName(const std::type_info& pType) {
  const std::string name = ReadableName(pType);
  // The last separator in front of template arguments and outside of "(anonymous namespace)".
  std::size_t start = 0;
  int depth = 0;
  for (std::size_t i = 0; i < name.size() && name[i] != '<'; ++i) {
    if (name[i] == '(' || name[i] == '`') ++depth;
    if (name[i] == ')' || name[i] == '\'') --depth;
    if (depth == 0 && (name[i] == ':' || name[i] == ' ')) start = i + 1;
  }
  return FromUtf8(name.substr(start));
}

} // namespace kiv
