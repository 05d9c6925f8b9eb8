#pragma once

#include <platform/Export.h>
#include <platform/InterfacedObject.h>

#include <shobjidl.h>

namespace kiv {

/// What is known of a file, for the shell to parse its path without touching the disk ("IFileSystemBindData"). It goes
/// into a bind context under the name `Name`. Used by one thread at a time.
class KIV_EXPORT TFileSystemBindData : public TInterfacedObject<IFileSystemBindData> {
public:
  /// "File System Bind Data" (`STR_FILE_SYS_BIND_DATA`).
  static constexpr wchar_t Name[] = L"File System Bind Data";

  explicit TFileSystemBindData(const WIN32_FIND_DATAW& pFindData) noexcept;
  ~TFileSystemBindData() override;

  HRESULT STDMETHODCALLTYPE SetFindData(const WIN32_FIND_DATAW* pFindData) override;
  HRESULT STDMETHODCALLTYPE GetFindData(WIN32_FIND_DATAW* pFindData) override;

private:
  WIN32_FIND_DATAW fFindData;
};

/// A bind context in which a path is parsed as the file that `pFindData` describes. Answers what the platform does.
KIV_EXPORT HRESULT CreateFileSystemBindContext(const WIN32_FIND_DATAW& pFindData, ComPtr<IBindCtx>& pContext);

} // namespace kiv
