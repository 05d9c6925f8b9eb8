#pragma once

#include <platform/Exception.h>
#include <platform/Types.h>

#include <string>

namespace kiv {

/// Ends an operation without a word to the user: TApplication::HandleException shows nothing for it.
class KIV_EXPORT EAbort : public EException {
public:
  explicit EAbort(std::wstring pMessage = L"Operation aborted");
  ~EAbort() override;
};

/// The object isn't in a state in which the operation makes sense.
class KIV_EXPORT EInvalidOperation : public EException {
public:
  using EException::EException;
  ~EInvalidOperation() override;
};

/// A parameter has a value that the operation can't work with.
class KIV_EXPORT EArgumentException : public EException {
public:
  using EException::EException;
  ~EArgumentException() override;
};

/// A parameter lies outside the range of valid values.
class KIV_EXPORT EArgumentOutOfRange : public EArgumentException {
public:
  using EArgumentException::EArgumentException;
  ~EArgumentOutOfRange() override;
};

/// A parameter that must be there is missing (null), or contradicts another one.
class KIV_EXPORT EInvalidArgument : public EArgumentException {
public:
  using EArgumentException::EArgumentException;
  ~EInvalidArgument() override;
};

/// A checked cast, or a text that stands for no value of the type that was asked for.
class KIV_EXPORT EInvalidCast : public EException {
public:
  explicit EInvalidCast(std::wstring pMessage = L"Invalid class typecast");
  ~EInvalidCast() override;
};

class KIV_EXPORT ENotSupportedException : public EException {
public:
  using EException::EException;
  ~ENotSupportedException() override;
};

/// A platform call failed.
class KIV_EXPORT EOSError : public EException {
public:
  /// `pErrorCode` is the platform's number ("System Error Codes"); `pMessage` says what failed.
  EOSError(DWORD pErrorCode, std::wstring pMessage);
  ~EOSError() override;

  DWORD ErrorCode() const noexcept { return fErrorCode; }

private:
  DWORD fErrorCode;
};

/// An operation was called that a derived class had to supply.
class KIV_EXPORT EAbstractError : public EException {
public:
  explicit EAbstractError(std::wstring pMessage = L"Abstract Error");
  ~EAbstractError() override;
};

/// A thread can't be made or can't be used as asked.
class KIV_EXPORT EThread : public EException {
public:
  using EException::EException;
  ~EThread() override;
};

class KIV_EXPORT EListError : public EException {
public:
  using EException::EException;
  ~EListError() override;
};

/// A string list was asked for what it hasn't got, or what a sorted list can't do.
class KIV_EXPORT EStringListError : public EListError {
public:
  using EListError::EListError;
  ~EStringListError() override;
};

/// A component's name or its place among its owner's components is impossible.
class KIV_EXPORT EComponentError : public EException {
public:
  using EException::EException;
  ~EComponentError() override;
};

/// A text doesn't follow its grammar.
class KIV_EXPORT EParserError : public EException {
public:
  /// Line and column count from 1; the message gets them in front.
  EParserError(const std::wstring& pMessage, int pLine, int pColumn);
  ~EParserError() override;

  int Line() const noexcept { return fLine; }
  int Column() const noexcept { return fColumn; }

private:
  int fLine;
  int fColumn;
};

/// A class or property isn't known, or a property can't take or give a value.
class KIV_EXPORT EPropertyError : public EException {
public:
  /// `pLine` counts from 1; 0 when no text is concerned.
  explicit EPropertyError(std::wstring pMessage, int pLine = 0);
  ~EPropertyError() override;

  int Line() const noexcept { return fLine; }

private:
  int fLine;
};

/// A variant doesn't hold, and can't be converted to, the type that was asked for.
class KIV_EXPORT EVariantError : public EException {
public:
  using EException::EException;
  ~EVariantError() override;
};

/// A value can't be converted to, or assigned to, another type.
class KIV_EXPORT EConvertError : public EException {
public:
  using EException::EException;
  ~EConvertError() override;
};

} // namespace kiv
