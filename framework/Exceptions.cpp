#include <framework/Exceptions.h>

#include <utility>

namespace kiv {

EAbort::EAbort(std::wstring pMessage) : EException(std::move(pMessage)) {}
EInvalidCast::EInvalidCast(std::wstring pMessage) : EException(std::move(pMessage)) {}
EAbstractError::EAbstractError(std::wstring pMessage) : EException(std::move(pMessage)) {}
EOSError::EOSError(DWORD pErrorCode, std::wstring pMessage) : EException(std::move(pMessage)), fErrorCode(pErrorCode) {}
EParserError::EParserError(const std::wstring& pMessage, int pLine, int pColumn)
    : EException(L"Line " + std::to_wstring(pLine) + L", column " + std::to_wstring(pColumn) + L": " + pMessage),
      fLine(pLine), fColumn(pColumn) {}
EPropertyError::EPropertyError(std::wstring pMessage, int pLine) : EException(std::move(pMessage)), fLine(pLine) {}

// Out of line, so that each class has one home for its type information: a handler in the host catches by it.
EAbort::~EAbort() = default;
EInvalidOperation::~EInvalidOperation() = default;
EArgumentException::~EArgumentException() = default;
EArgumentOutOfRange::~EArgumentOutOfRange() = default;
EInvalidArgument::~EInvalidArgument() = default;
EInvalidCast::~EInvalidCast() = default;
ENotSupportedException::~ENotSupportedException() = default;
EOSError::~EOSError() = default;
EAbstractError::~EAbstractError() = default;
EThread::~EThread() = default;
EListError::~EListError() = default;
EStringListError::~EStringListError() = default;
EComponentError::~EComponentError() = default;
EParserError::~EParserError() = default;
EPropertyError::~EPropertyError() = default;
EVariantError::~EVariantError() = default;
EConvertError::~EConvertError() = default;

} // namespace kiv
