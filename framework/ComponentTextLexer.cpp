#include <framework/ComponentTextLexer.h>

#include <platform/Characters.h>

#include <cstdint>

namespace kiv {

namespace {

constexpr bool IsLetter(wchar_t c) {
  return IsAsciiLetter(c) || c == L'_';
}
constexpr std::uint32_t UnitOf(wchar_t c) {
  return sizeof(wchar_t) == 2 ? static_cast<std::uint32_t>(c) & 0xFFFFU : static_cast<std::uint32_t>(c);
}

void AppendHexEscape(std::wstring& out, std::uint32_t unit) {
  out.append(L"\\u{");
  bool started = false;
  for (int shift = 28; shift >= 0; shift -= 4) {
    const std::uint32_t digit = unit >> static_cast<unsigned>(shift) & 0xFU;
    started = started || digit != 0 || shift == 0;
    if (started) out.push_back(L"0123456789ABCDEF"[digit]);
  }
  out.push_back(L'}');
}

} // namespace

std::wstring QuoteComponentText(std::wstring_view pText) {
  std::wstring out;
  out.reserve(pText.size() + 2);
  out.push_back(L'"');
  for (std::size_t i = 0; i < pText.size(); ++i) {
    const std::uint32_t unit = UnitOf(pText[i]);
    switch (unit) {
    case '"':
      out.append(L"\\\"");
      continue;
    case '\\':
      out.append(L"\\\\");
      continue;
    case '\n':
      out.append(L"\\n");
      continue;
    case '\r':
      out.append(L"\\r");
      continue;
    case '\t':
      out.append(L"\\t");
      continue;
    default:
      break;
    }
    if (sizeof(wchar_t) == 2 && IsHighSurrogate(unit) && i + 1 < pText.size() && IsLowSurrogate(UnitOf(pText[i + 1]))) {
      out.append(pText.substr(i, 2));
      ++i;
      continue;
    }
    // With wide units a pair of surrogates is no code point either: UTF-8 would make one of the two.
    const bool plain = unit >= 0x20 && (unit < 0x7F || unit > 0x9F) && unit <= 0x10FFFF && !IsHighSurrogate(unit) &&
                       !IsLowSurrogate(unit);
    if (plain) {
      out.push_back(pText[i]);
    } else {
      AppendHexEscape(out, unit);
    }
  }
  out.push_back(L'"');
  return out;
}

void TComponentTextLexer::Raise(const std::wstring& pMessage) const {
  throw EParserError(pMessage, fLine, fColumn);
}

wchar_t TComponentTextLexer::Take() noexcept {
  const wchar_t c = fText[fAt++];
  if (c == L'\n') {
    ++fLine;
    fColumn = 1;
  } else {
    ++fColumn;
  }
  return c;
}

void TComponentTextLexer::SkipBlanks() noexcept {
  while (!AtEnd() && (Peek() == L' ' || Peek() == L'\t' || Peek() == L'\r' || Peek() == L'\n')) Take();
}

TToken TComponentTextLexer::Next() {
  SkipBlanks();
  TToken token;
  token.line = fLine;
  token.column = fColumn;
  if (AtEnd()) return token;
  const wchar_t c = Peek();
  if (IsLetter(c)) {
    token.kind = TTokenKind::Identifier;
    token.text = TakeIdentifier();
  } else if (c == L'"') {
    ReadString(token);
  } else if (IsAsciiDigit(c) || c == L'-') {
    ReadNumber(token);
  } else if (c == L'@') {
    ReadReference(token);
  } else if (std::wstring_view(L"{}[]()=,").find(c) != std::wstring_view::npos) {
    token.kind = TTokenKind::Symbol;
    token.text = Take();
  } else {
    Raise(L"Unexpected character " + QuoteComponentText(std::wstring_view(&c, 1)) + L".");
  }
  return token;
}

std::wstring TComponentTextLexer::TakeIdentifier() {
  std::wstring name;
  while (IsLetter(Peek()) || IsAsciiDigit(Peek())) name.push_back(Take());
  return name;
}

void TComponentTextLexer::ReadString(TToken& pToken) {
  pToken.kind = TTokenKind::String;
  Take();
  for (;;) {
    if (AtEnd() || Peek() == L'\n' || Peek() == L'\r') Raise(L"Expected '\"' before the end of the line.");
    const wchar_t c = Take();
    if (c == L'"') return;
    if (c == L'\\') {
      ReadEscape(pToken.text);
    } else {
      pToken.text.push_back(c);
    }
  }
}

void TComponentTextLexer::ReadEscape(std::wstring& pText) {
  switch (Peek()) {
  case L'"':
  case L'\\':
    pText.push_back(Take());
    return;
  case L'n':
    Take(), pText.push_back(L'\n');
    return;
  case L'r':
    Take(), pText.push_back(L'\r');
    return;
  case L't':
    Take(), pText.push_back(L'\t');
    return;
  case L'u':
    Take();
    break;
  default:
    Raise(L"Expected one of \" \\ n r t u behind '\\'.");
  }
  if (Peek() != L'{') Raise(L"Expected '{' behind \\u.");
  Take();
  std::uint64_t unit = 0;
  int digits = 0;
  for (int digit = HexDigitValue(Peek()); digit >= 0; digit = HexDigitValue(Peek())) {
    if (++digits > 8) Raise(L"Expected at most 8 hexadecimal digits.");
    unit = unit << 4U | static_cast<unsigned>(digit);
    Take();
  }
  if (digits == 0) Raise(L"Expected a hexadecimal digit.");
  if (Peek() != L'}') Raise(L"Expected '}'.");
  Take();
  if constexpr (sizeof(wchar_t) == 2) {
    if (unit > 0x10FFFF) Raise(L"The character lies beyond 10FFFF.");
    if (unit > 0xFFFF) {
      pText.push_back(static_cast<wchar_t>(0xD800 + ((unit - 0x10000) >> 10U)));
      pText.push_back(static_cast<wchar_t>(0xDC00 + ((unit - 0x10000) & 0x3FFU)));
      return;
    }
  }
  pText.push_back(static_cast<wchar_t>(unit));
}

// The characters that numbers are made of; whether they make one is for the property's type to say.
void TComponentTextLexer::ReadNumber(TToken& pToken) {
  pToken.kind = TTokenKind::Number;
  pToken.text.push_back(Take());
  for (wchar_t last = pToken.text.back();; last = pToken.text.back()) {
    const wchar_t c = Peek();
    const bool isSign = (c == L'+' || c == L'-') && (last == L'e' || last == L'E');
    if (!IsAsciiDigit(c) && !IsLetter(c) && c != L'.' && !isSign) return;
    pToken.text.push_back(Take());
  }
}

void TComponentTextLexer::ReadReference(TToken& pToken) {
  pToken.kind = TTokenKind::Reference;
  Take();
  for (;;) {
    if (!IsLetter(Peek())) Raise(L"Expected the name of a component.");
    pToken.text.append(TakeIdentifier());
    if (Peek() != L'.') return;
    pToken.text.push_back(Take());
  }
}

} // namespace kiv
