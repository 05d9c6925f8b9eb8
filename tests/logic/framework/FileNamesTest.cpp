#include <framework/FileNames.h>

#include <gtest/gtest.h>

namespace kiv {
namespace {

TEST(FileNames, TakeAPathApart) {
  const struct {
    const wchar_t *whole, *path, *dir, *drive, *name, *extension;
  } cases[] = {
      {L"", L"", L"", L"", L"", L""},
      {L"a", L"", L"", L"", L"a", L""},
      {L"C:\\dir\\a.tar.gz", L"C:\\dir\\", L"C:\\dir", L"C:", L"a.tar.gz", L".gz"},
      {L"C:\\dir\\", L"C:\\dir\\", L"C:\\dir", L"C:", L"", L""},
      {L"C:\\a", L"C:\\", L"C:\\", L"C:", L"a", L""},
      {L"C:\\", L"C:\\", L"C:\\", L"C:", L"", L""},
      {L"C:", L"C:", L"C:", L"C:", L"", L""},
      {L"C:a.b", L"C:", L"C:", L"C:", L"a.b", L".b"},
      {L"\\a", L"\\", L"\\", L"", L"a", L""},
      {L"dir.x\\a", L"dir.x\\", L"dir.x", L"", L"a", L""},
      {L"a\\\\b", L"a\\\\", L"a\\\\", L"", L"b", L""},
      {L"C:/dir/a.b", L"C:/dir/", L"C:/dir", L"C:", L"a.b", L".b"},
      {L".hidden", L"", L"", L"", L".hidden", L".hidden"},
      {L"a.", L"", L"", L"", L"a.", L"."},
      {L"\\\\srv\\share\\dir\\a", L"\\\\srv\\share\\dir\\", L"\\\\srv\\share\\dir", L"\\\\srv\\share", L"a", L""},
      {L"\\\\srv\\share", L"\\\\srv\\", L"\\\\srv", L"\\\\srv\\share", L"share", L""},
      {L"\\\\srv\\", L"\\\\srv\\", L"\\\\srv", L"\\\\srv", L"", L""},
      {L"\\\\srv\\\\x", L"\\\\srv\\\\", L"\\\\srv\\\\", L"\\\\srv", L"x", L""},
      {L"\\\\srv", L"\\\\", L"\\\\", L"\\\\srv", L"srv", L""},
      {L"\\\\", L"\\\\", L"\\\\", L"\\\\", L"", L""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ExtractFilePath(c.whole), c.path) << c.whole;
    EXPECT_EQ(ExtractFileDir(c.whole), c.dir) << c.whole;
    EXPECT_EQ(ExtractFileDrive(c.whole), c.drive) << c.whole;
    EXPECT_EQ(ExtractFileName(c.whole), c.name) << c.whole;
    EXPECT_EQ(ExtractFileExt(c.whole), c.extension) << c.whole;
  }
}

} // namespace
} // namespace kiv
