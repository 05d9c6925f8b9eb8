#include <doubles/ScopedTempFolder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include <stdlib.h>

namespace kiv::test {

namespace {

namespace fs = std::filesystem;

// Files may have any bytes for a name, so that lone surrogates are encoded like every other number instead of being
// replaced: two names that differ stay two files.
fs::path ToNative(const std::wstring& text) {
  std::string bytes;
  const auto put = [&bytes](unsigned value) { bytes.push_back(static_cast<char>(static_cast<unsigned char>(value))); };
  for (const wchar_t character : text) {
    const auto c = static_cast<unsigned>(character);
    if (c < 0x80) {
      put(c);
      continue;
    }
    if (c < 0x800) {
      put(0xC0U | c >> 6U);
    } else {
      if (c < 0x10000) {
        put(0xE0U | c >> 12U);
      } else {
        put(0xF0U | c >> 18U);
        put(0x80U | (c >> 12U & 0x3FU));
      }
      put(0x80U | (c >> 6U & 0x3FU));
    }
    put(0x80U | (c & 0x3FU));
  }
  return bytes;
}

// A folder that its owner may not list or change is opened up first.
void RemoveAll(const fs::path& path, std::error_code& error) {
  std::error_code ignored;
  if (fs::is_directory(fs::symlink_status(path, ignored))) {
    fs::permissions(path, fs::perms::owner_all, fs::perm_options::add, ignored);
    for (const auto& entry : fs::directory_iterator(path, error)) RemoveAll(entry.path(), error);
  }
  if (!fs::remove(path, ignored) && !error) error = ignored;
}

} // namespace

ScopedTempFolder::ScopedTempFolder() {
  std::string path = (fs::temp_directory_path() / "kiv-test-XXXXXX").string();
  if (!mkdtemp(path.data())) throw std::runtime_error("No temporary folder can be made.");
  // Made of plain characters, if the system's temporary folder is.
  fPath = fs::path(path).wstring();
}

ScopedTempFolder::~ScopedTempFolder() {
  std::error_code error;
  RemoveAll(ToNative(fPath), error);
  if (error) ADD_FAILURE() << "A temporary folder can't be removed: " << error.message();
}

std::wstring ScopedTempFolder::PathOf(const std::wstring& pRelative) const {
  std::wstring path = fPath + L'/' + pRelative;
  std::replace(path.begin(), path.end(), L'\\', L'/');
  return path;
}

std::wstring ScopedTempFolder::MakeFile(const std::wstring& pRelative, std::uint64_t pSize) {
  const std::wstring path = PathOf(pRelative);
  const fs::path native = ToNative(path);
  fs::create_directories(native.parent_path());
  if (!std::ofstream(native)) throw std::runtime_error("A file can't be made: " + native.string());
  fs::resize_file(native, pSize);
  return path;
}

std::wstring ScopedTempFolder::MakeFolder(const std::wstring& pRelative) {
  const std::wstring path = PathOf(pRelative);
  fs::create_directories(ToNative(path));
  return path;
}

} // namespace kiv::test
