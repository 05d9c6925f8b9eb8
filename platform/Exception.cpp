#include <platform/Exception.h>

#include <platform/Text.h>

#include <utility>

namespace kiv {

struct EException::TTexts {
  std::wstring message;
  std::string utf8;
};

EException::EException(std::wstring pMessage) {
  SetMessage(std::move(pMessage));
}

EException::~EException() = default;

const std::wstring& EException::Message() const noexcept {
  return fTexts->message;
}

void EException::SetMessage(std::wstring pMessage) {
  std::string utf8 = ToUtf8(pMessage);
  fTexts = std::make_shared<const TTexts>(TTexts{std::move(pMessage), std::move(utf8)});
}

const char* EException::what() const noexcept {
  return fTexts->utf8.c_str();
}

} // namespace kiv
