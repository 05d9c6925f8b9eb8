#pragma once

#include <platform/Export.h>

#include <exception>
#include <memory>
#include <string>

namespace kiv {

/// Root of all exceptions that the library raises. Its message is meant for people: what failed, on what, with the
/// platform's text where there is one. Copying never throws.
class KIV_EXPORT EException : public std::exception {
public:
  explicit EException(std::wstring pMessage);
  EException(const EException&) noexcept = default;
  EException& operator=(const EException&) noexcept = default;
  ~EException() override;

  const std::wstring& Message() const noexcept;
  /// Replaces the message, so that a catcher can say more about the circumstances before it passes the exception on.
  void SetMessage(std::wstring pMessage);
  /// The message in UTF-8.
  const char* what() const noexcept override;

private:
  struct TTexts;
  std::shared_ptr<const TTexts> fTexts;
};

} // namespace kiv
