#pragma once

#include <framework/Exceptions.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace kiv {

enum class TTokenKind { End, Identifier, String, Number, Reference, Symbol };

struct TToken {
  TTokenKind kind = TTokenKind::End;
  /// The value of a string, the path behind a reference's "@", else the token as it stands.
  std::wstring text;
  int line = 1;
  int column = 1;

  bool Is(wchar_t pSymbol) const noexcept { return kind == TTokenKind::Symbol && text[0] == pSymbol; }
  bool IsWord(std::wstring_view pWord) const noexcept { return kind == TTokenKind::Identifier && text == pWord; }
};

/// Cuts the text form of components into tokens, each as it is asked for. Columns count units of the text, from 1.
class TComponentTextLexer {
public:
  /// A byte order mark in front is no part of the text.
  explicit TComponentTextLexer(std::wstring_view pText) noexcept : fText(pText) {
    if (!fText.empty() && fText.front() == static_cast<wchar_t>(0xFEFF)) fText.remove_prefix(1);
  }

  /// Raises EParserError for what begins no token and for a malformed one.
  TToken Next();

private:
  bool AtEnd() const noexcept { return fAt >= fText.size(); }
  wchar_t Peek() const noexcept { return AtEnd() ? L'\0' : fText[fAt]; }
  wchar_t Take() noexcept;
  void SkipBlanks() noexcept;
  std::wstring TakeIdentifier();
  void ReadString(TToken& pToken);
  void ReadEscape(std::wstring& pText);
  void ReadNumber(TToken& pToken);
  void ReadReference(TToken& pToken);
  [[noreturn]] void Raise(const std::wstring& pMessage) const;

  std::wstring_view fText;
  std::size_t fAt = 0;
  int fLine = 1;
  int fColumn = 1;
};

/// A text value as the lexer reads it back: quoted and escaped.
std::wstring QuoteComponentText(std::wstring_view pText);

} // namespace kiv
