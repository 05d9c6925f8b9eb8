#include <folder_view/FolderSizes.h>

#include <core/FileFunctions.h>
#include <core/FolderFunctions.h>
#include <core/PathFunctions.h>
#include <folder_view/FolderWork.h>
#include <threading/WorkProcedures.h>

#include <memory>

namespace kiv::sample {

namespace {

TFolderSize SizeOf(const std::wstring& path, bool follow_links, ICancellationIndicator& withdrawn) {
  TFolderSize total;
  WIN32_FIND_DATAW data;
  const std::wstring root = ExcludeTrailingDelimiter(path);
  if (!IsDrive(path)) {
    if (!FindFirst(root, data)) return total;
    if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) return {GetFileSize64(data), 1, 0};
  }
  std::vector<std::wstring> folders{root};
  while (!folders.empty() && !withdrawn.IsCancellationRequested()) {
    const std::wstring folder = std::move(folders.back()) + L'\\';
    folders.pop_back();
    ++total.folderCount;
    const TUniqueFind find = FindFirst(folder + L'*', data);
    for (BOOL more = find ? TRUE : FALSE; more && !withdrawn.IsCancellationRequested();
         more = FindNextFileW(find.Get(), &data)) {
      if (IsFolderToIgnore(data.cFileName)) continue;
      if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        ++total.fileCount;
        total.size += GetFileSize64(data);
      } else if (follow_links || (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        folders.push_back(folder + data.cFileName);
      }
    }
  }
  return total;
}

} // namespace

void TFolderSizes::Measure(std::vector<std::wstring> pPaths, bool pFollowReparsePoints,
                           ComPtr<ICancellationIndicator> pCancellationToken,
                           std::function<void(const TFolderSize&)> pDone) {
  for (std::wstring& path : pPaths) {
    const auto size = std::make_shared<TFolderSize>();
    const auto measure = [size, path = std::move(path), pFollowReparsePoints, pCancellationToken] {
      *size = SizeOf(path, pFollowReparsePoints, *pCancellationToken.Get());
    };
    SizeWorkers().AddWorkItem(TAsyncProcedure::Create(measure, pCancellationToken, [size, pDone] { pDone(*size); }),
                              TPriority::Normal);
  }
}

} // namespace kiv::sample
