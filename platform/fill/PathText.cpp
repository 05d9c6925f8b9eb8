#include <platform/fill/PathText.h>

#include <platform/Characters.h>
#include <platform/LetterCase.h>

#include <algorithm>

namespace kiv::PathText {

namespace {

constexpr std::size_t None = std::wstring_view::npos;
constexpr std::wstring_view LongPrefix = LR"(\\?\)";

bool StartsWithDrive(std::wstring_view path) {
  return path.size() >= 2 && path[1] == L':' && IsAsciiLetter(path[0]);
}

// What stands in front of a server, a drive or a device in the forms that begin with two backslashes; 0 for any other.
std::size_t PrefixLength(std::wstring_view path) {
  if (!path.starts_with(LR"(\\)")) return 0;
  if (!path.starts_with(LongPrefix) && !path.starts_with(LR"(\\.\)")) return 2;
  const bool unc = path.size() >= 8 && ToUpperCase(path[4]) == L'U' && ToUpperCase(path[5]) == L'N' &&
                   ToUpperCase(path[6]) == L'C' && path[7] == L'\\';
  return unc ? 8 : 4;
}

std::size_t PartEnd(std::wstring_view path, std::size_t start) {
  return std::min(path.find(L'\\', start), path.size());
}

bool IsRelativePart(std::wstring_view part) {
  return part == L"." || part == L"..";
}

// What no ".." takes away, without the backslash behind it.
std::size_t RootLength(std::wstring_view path) {
  if (StartsWithDrive(path)) return 2;
  const std::size_t prefix = PrefixLength(path);
  if (prefix == 0) return 0;
  const std::size_t end = PartEnd(path, prefix);
  return IsRelativePart(path.substr(prefix, end - prefix)) ? prefix : end;
}

// The root on which a path with a single backslash in front stands: a share, where there is one.
std::size_t ShareRootLength(std::wstring_view path) {
  const std::size_t root = RootLength(path);
  const std::size_t prefix = PrefixLength(path);
  const bool server = (prefix == 2 || prefix == 8) && root < path.size();
  return server ? PartEnd(path, root + 1) : root;
}

// A buffer that a path is put together in.
class TBuilder {
public:
  TBuilder(wchar_t* pBuffer, std::wstring_view pRoot) : fBuffer(pBuffer), fRoot(pRoot.size()) { Append(pRoot); }

  void Append(std::wstring_view text) {
    std::copy(text.begin(), text.end(), fBuffer + fLength);
    fLength += text.size();
  }
  void AppendDelimiter() {
    const bool has = fLength == fRoot && fRoot > 0 && fBuffer[fRoot - 1] == L'\\';
    if (!has) Append(L"\\");
  }
  void RemoveLastPart() {
    const std::size_t last = std::wstring_view(fBuffer, fLength).rfind(L'\\');
    fLength = last == None || last < fRoot ? fRoot : last;
  }
  std::size_t Finish() {
    std::wstring_view drive(fBuffer, fLength);
    if (drive.starts_with(LongPrefix)) drive.remove_prefix(LongPrefix.size());
    const bool bare_drive = drive.size() == 2 && StartsWithDrive(drive);
    if (fLength == 0 || bare_drive) Append(L"\\");
    return fLength;
  }

private:
  wchar_t* fBuffer;
  std::size_t fRoot;
  std::size_t fLength = 0;
};

constexpr bool IsSpecEnd(wchar_t c) {
  return c == L'\0' || c == L';';
}

bool SameLetter(wchar_t a, wchar_t b) {
  return a == b || ToUpperCase(a) == ToUpperCase(b);
}

// The pattern up to a ";". Behind a "*" that didn't work out only the last one has to be tried further on.
bool MatchOne(const wchar_t* name, const wchar_t* spec) {
  const wchar_t* star = nullptr;    // behind the last "*"
  const wchar_t* retried = nullptr; // where in the name what follows it was last tried
  for (;;) {
    const wchar_t p = *spec;
    if (p == L'*') {
      while (*spec == L'*') ++spec;
      if (IsSpecEnd(*spec)) return true;
      star = spec;
      retried = name;
    } else if (*name == L'\0') {
      return IsSpecEnd(p);
    } else if (!IsSpecEnd(p) && (p == L'?' || SameLetter(p, *name))) {
      ++spec;
      ++name;
    } else if (star) {
      do {
        ++retried;
      } while (*retried != L'\0' && *star != L'?' && !SameLetter(*star, *retried));
      spec = star;
      name = retried;
    } else {
      return false;
    }
  }
}

} // namespace

std::size_t Canonicalize(std::wstring_view pPath, wchar_t* pBuffer) noexcept {
  if (pPath.size() > Longest) return 0;
  const std::size_t root = RootLength(pPath);
  TBuilder out(pBuffer, pPath.substr(0, root));
  // Nothing but "." so far, and no delimiter in front of what comes.
  bool at_start = root < pPath.size() && pPath[root] != L'\\';
  for (std::size_t at = root; at < pPath.size();) {
    const std::size_t start = pPath[at] == L'\\' ? at + 1 : at;
    at = PartEnd(pPath, start);
    const std::wstring_view part = pPath.substr(start, at - start);
    if (part == L".") continue;
    if (part == L"..") {
      out.RemoveLastPart();
    } else {
      if (!at_start) out.AppendDelimiter();
      out.Append(part);
    }
    at_start = false;
  }
  return out.Finish();
}

std::size_t Combine(std::wstring_view pDirectory, std::wstring_view pFile, wchar_t* pBuffer) noexcept {
  if (pFile.empty()) return Canonicalize(pDirectory, pBuffer);
  if (pDirectory.empty() || StartsWithDrive(pFile) || pFile.starts_with(LR"(\\)")) return Canonicalize(pFile, pBuffer);
  const bool from_root = pFile.front() == L'\\';
  const std::wstring_view base = from_root ? pDirectory.substr(0, ShareRootLength(pDirectory)) : pDirectory;
  const bool delimiter = !from_root && base.back() != L'\\';
  const std::size_t length = base.size() + (delimiter ? 1 : 0) + pFile.size();
  if (length > Longest) return 0;
  wchar_t joined[Longest];
  wchar_t* end = std::copy(base.begin(), base.end(), joined);
  if (delimiter) *end++ = L'\\';
  std::copy(pFile.begin(), pFile.end(), end);
  return Canonicalize({joined, length}, pBuffer);
}

bool MatchSpec(const wchar_t* pName, const wchar_t* pSpec) noexcept {
  if (pSpec[0] == L'*' && pSpec[1] == L'.' && pSpec[2] == L'*' && pSpec[3] == L'\0') return true;
  while (*pSpec) {
    while (*pSpec == L' ') ++pSpec;
    if (MatchOne(pName, pSpec)) return true;
    while (!IsSpecEnd(*pSpec)) ++pSpec;
    if (*pSpec) ++pSpec;
  }
  return false;
}

} // namespace kiv::PathText
