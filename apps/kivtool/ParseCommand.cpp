#include "ParseCommand.h"

#include "ObjectText.h"

#include <platform/Text.h>

namespace kivtool {

TTextCommand ParseCommand(const TEnvironment& pEnvironment) {
  return {1, [parse = pEnvironment.parseText](const std::wstring& text, const std::wstring&) {
            const auto list = parse(text);
            std::wstring line = list->IsInvalid() ? L"0\t" : L"1\t";
            line += std::to_wstring(list->Depth()) + L'\t';
            line += kiv::FromUtf8(Printable(list->DisplayPath())) + L'\t';
            return line += kiv::ShellFolderName(list->SpecialFolder());
          }};
}

} // namespace kivtool
