#include <doubles/SimulatedFileSystem.h>

#include <doubles/SimulatedNode.h>

#include <utility>

namespace kiv::test {

namespace {

// Not among the platform types that portable code has.
constexpr DWORD NotSameDevice = 17;
constexpr DWORD SharingViolation = 32;
constexpr DWORD InvalidName = 123;

constexpr TObjectFlags KindFlags{TObjectFlag::Folder, TObjectFlag::FileSystem, TObjectFlag::Stream};

HRESULT Error(DWORD code) {
  return HRESULT_FROM_WIN32(code);
}

wchar_t FoldCharacter(wchar_t character) {
  const auto c = static_cast<std::uint32_t>(character);
  const auto within = [c](std::uint32_t first, std::uint32_t last) { return c >= first && c <= last; };
  if (within(L'a', L'z')) return static_cast<wchar_t>(c - 32);
  if (within(0xE0, 0xFE) && c != 0xF7) return static_cast<wchar_t>(c - 32);
  if (c == 0x3C2) return static_cast<wchar_t>(0x3A3); // both small sigmas have one capital
  if (within(0x3B1, 0x3C9) || within(0x430, 0x44F)) return static_cast<wchar_t>(c - 32);
  if (within(0x450, 0x45F)) return static_cast<wchar_t>(c - 80);
  return character;
}

bool IsValidName(std::wstring_view name) {
  return !name.empty() && name.size() <= SimulatedFileSystem::MaxName && name != L"." && name != L".." &&
         name.find(L'\\') == std::wstring_view::npos;
}

TFileChange ByKind(bool isFolder, TFileChange ofFolder, TFileChange ofFile) {
  return isFolder ? ofFolder : ofFile;
}

} // namespace

std::wstring FoldName(std::wstring_view pName) {
  std::wstring folded(pName);
  for (wchar_t& c : folded) c = FoldCharacter(c);
  return folded;
}

SimulatedFileSystem::SimulatedFileSystem() {
  fComputer = AddNode(nullptr, L"", {TObjectFlag::Folder});
}

SimulatedFileSystem::~SimulatedFileSystem() = default;

// One change of the tree, with its notices behind it.
template <typename F>
HRESULT SimulatedFileSystem::Change(F pChange) {
  HRESULT hr = S_OK;
  {
    const std::lock_guard guard(fLock);
    hr = pChange();
  }
  fNotices.Deliver();
  return hr;
}

HRESULT SimulatedFileSystem::OpenFolder(const std::wstring& pPath, std::unique_ptr<IFolderStepper>& pStepper) {
  pStepper.reset();
  const std::lock_guard guard(fLock);
  TNodePtr node;
  const HRESULT hr = Resolve(pPath, node);
  if (hr == Error(ERROR_FILE_NOT_FOUND)) return Error(ERROR_PATH_NOT_FOUND);
  if (FAILED(hr)) return hr;
  if (!node->IsFolder()) return Error(ERROR_DIRECTORY);
  pStepper = std::make_unique<TStepper>(*this, std::move(node));
  return S_OK;
}

std::wstring SimulatedFileSystem::Combine(const std::wstring& pFolder, const std::wstring& pName) {
  if (pFolder.empty()) return pName + L'\\';
  return pFolder.ends_with(L'\\') ? pFolder + pName : pFolder + L'\\' + pName;
}

HRESULT SimulatedFileSystem::AddDrive(wchar_t pLetter) {
  const std::lock_guard guard(fLock);
  if (FindDrive(pLetter)) return Error(ERROR_ALREADY_EXISTS);
  AddNode(fComputer, std::wstring(1, pLetter) + L':', {TObjectFlag::Folder, TObjectFlag::FileSystem});
  return S_OK;
}

HRESULT SimulatedFileSystem::SetMedium(wchar_t pLetter, bool pPresent) {
  return Change([&] {
    const TNodePtr drive = FindDrive(pLetter);
    if (!drive) return Error(ERROR_PATH_NOT_FOUND);
    if (drive->noMedium != pPresent) return S_OK;
    drive->noMedium = !pPresent;
    fNotices.Post({pPresent ? TFileChange::MediaInsert : TFileChange::MediaRemove, PathOf(*drive), {}});
    return S_OK;
  });
}

HRESULT SimulatedFileSystem::MakeFolder(const std::wstring& pPath) {
  return Make(pPath, {TObjectFlag::Folder, TObjectFlag::FileSystem}, TFolderObject::UnknownSize,
              TFileChange::FolderCreate);
}

HRESULT SimulatedFileSystem::MakeFile(const std::wstring& pPath, std::int64_t pSize) {
  return Make(pPath, {TObjectFlag::FileSystem, TObjectFlag::Stream}, pSize, TFileChange::FileCreate);
}

HRESULT SimulatedFileSystem::Make(const std::wstring& pPath, TObjectFlags pFlags, std::int64_t pSize,
                                  TFileChange pChange) {
  return Change([&] {
    TNodePtr folder;
    std::wstring name;
    if (const HRESULT hr = ResolveNewPlace(pPath, folder, name); FAILED(hr)) return hr;
    if (folder->Child(name)) return Error(ERROR_ALREADY_EXISTS);
    const TNodePtr node = AddNode(folder, name, pFlags);
    node->object.size = pSize;
    fNotices.Post({pChange, PathOf(*node), {}});
    return S_OK;
  });
}

HRESULT SimulatedFileSystem::Write(const std::wstring& pPath, std::int64_t pSize) {
  return Change([&] {
    TNodePtr node;
    if (const HRESULT hr = Resolve(pPath, node); FAILED(hr)) return hr;
    if (node->IsFolder() || node->object.flags.Contains(TObjectFlag::ReadOnly)) return Error(ERROR_ACCESS_DENIED);
    node->object.size = pSize;
    node->object.changed = node->object.accessed = Tick();
    fNotices.Post({TFileChange::FileChange, PathOf(*node), {}});
    return S_OK;
  });
}

HRESULT SimulatedFileSystem::SetAttributes(const std::wstring& pPath, TObjectFlags pFlags) {
  return Change([&] {
    TNodePtr node;
    if (const HRESULT hr = Resolve(pPath, node); FAILED(hr)) return hr;
    const TObjectFlags flags = (node->object.flags & KindFlags) | (pFlags - KindFlags);
    if (flags == node->object.flags) return S_OK;
    node->object.flags = flags;
    fNotices.Post({TFileChange::AttributesChange, PathOf(*node), {}});
    return S_OK;
  });
}

HRESULT SimulatedFileSystem::Rename(const std::wstring& pPath, const std::wstring& pNewName) {
  return Change([&] {
    TNodePtr node;
    if (const HRESULT hr = Resolve(pPath, node); FAILED(hr)) return hr;
    if (!IsValidName(pNewName)) return Error(InvalidName);
    return MoveNode(node, node->parent.lock(), pNewName);
  });
}

HRESULT SimulatedFileSystem::Move(const std::wstring& pPath, const std::wstring& pNewPath) {
  return Change([&] {
    TNodePtr node;
    TNodePtr folder;
    std::wstring name;
    if (const HRESULT hr = Resolve(pPath, node); FAILED(hr)) return hr;
    if (const HRESULT hr = ResolveNewPlace(pNewPath, folder, name); FAILED(hr)) return hr;
    return MoveNode(node, folder, name);
  });
}

HRESULT SimulatedFileSystem::Delete(const std::wstring& pPath) {
  return Change([&] {
    TNodePtr node;
    if (const HRESULT hr = Resolve(pPath, node); FAILED(hr)) return hr;
    if (node->IsDriveOrComputer() || node->parent.lock()->denied) return Error(ERROR_ACCESS_DENIED);
    Unlink(node);
    return S_OK;
  });
}

HRESULT SimulatedFileSystem::DenyAccess(const std::wstring& pPath, bool pDeny) {
  const std::lock_guard guard(fLock);
  TNodePtr node;
  if (const HRESULT hr = Resolve(pPath, node); FAILED(hr)) return hr;
  if (!node->IsFolder()) return Error(ERROR_DIRECTORY);
  node->denied = pDeny;
  return S_OK;
}

HRESULT SimulatedFileSystem::AnnounceFolderUpdate(const std::wstring& pPath) {
  return Change([&] {
    TNodePtr node;
    if (const HRESULT hr = Resolve(pPath, node); FAILED(hr)) return hr;
    if (!node->IsFolder()) return Error(ERROR_DIRECTORY);
    fNotices.Post({TFileChange::FolderUpdate, PathOf(*node), {}});
    return S_OK;
  });
}

HRESULT SimulatedFileSystem::AddFault(const std::wstring& pFolder, std::size_t pStep, TStepFault pFault) {
  const std::lock_guard guard(fLock);
  TNodePtr node;
  if (const HRESULT hr = Resolve(pFolder, node); FAILED(hr)) return hr;
  if (!node->IsFolder()) return Error(ERROR_DIRECTORY);
  node->faults.emplace(pStep, std::move(pFault));
  return S_OK;
}

void SimulatedFileSystem::ClearFaults(const std::wstring& pFolder) {
  const std::lock_guard guard(fLock);
  TNodePtr node;
  if (SUCCEEDED(Resolve(pFolder, node))) node->faults.clear();
}

HRESULT SimulatedFileSystem::Find(const std::wstring& pPath, TFolderObject& pObject) const {
  const std::lock_guard guard(fLock);
  TNodePtr node;
  const HRESULT hr = Resolve(pPath, node);
  if (SUCCEEDED(hr)) pObject = node->object;
  return hr;
}

SimulatedFileSystem::TSnapshot SimulatedFileSystem::Snapshot() const {
  const std::lock_guard guard(fLock);
  TSnapshot all;
  Collect(*fComputer, all);
  return all;
}

void SimulatedFileSystem::Collect(const TNode& pNode, TSnapshot& pAll) const {
  for (const auto& [folded, child] : pNode.children) pAll.emplace_back(PathOf(*child), child->object);
  for (const auto& [folded, child] : pNode.children) Collect(*child, pAll);
}

TFileTime SimulatedFileSystem::CurrentTime() const {
  const std::lock_guard guard(fLock);
  return fTime;
}

HRESULT SimulatedFileSystem::IdOf(const std::wstring& pPath, TNodeId& pId) const {
  const std::lock_guard guard(fLock);
  TNodePtr node;
  const HRESULT hr = Resolve(pPath, node);
  if (SUCCEEDED(hr)) pId = node->id;
  return hr;
}

HRESULT SimulatedFileSystem::ChildrenOf(TNodeId pId, std::vector<TChild>& pChildren) const {
  pChildren.clear();
  const std::lock_guard guard(fLock);
  const TNodePtr node = NodeOf(pId);
  if (!node) return Error(ERROR_PATH_NOT_FOUND);
  if (!node->IsFolder()) return Error(ERROR_DIRECTORY);
  if (const HRESULT hr = CheckListable(*node); FAILED(hr)) return hr;
  for (const auto& [folded, child] : node->children) pChildren.push_back({child->id, child->object.name});
  return S_OK;
}

std::optional<TFolderObject> SimulatedFileSystem::MaybeObject(TNodeId pId) const {
  const std::lock_guard guard(fLock);
  const TNodePtr node = NodeOf(pId);
  return node ? std::optional(node->object) : std::nullopt;
}

std::optional<std::wstring> SimulatedFileSystem::MaybePath(TNodeId pId) const {
  const std::lock_guard guard(fLock);
  const TNodePtr node = NodeOf(pId);
  return node ? std::optional(PathOf(*node)) : std::nullopt;
}

// From here on: under the lock.

HRESULT SimulatedFileSystem::Resolve(const std::wstring& pPath, TNodePtr& pNode) const {
  if (pPath.size() > MaxPath) return Error(ERROR_FILENAME_EXCED_RANGE);
  std::wstring_view rest = pPath;
  TNodePtr node = fComputer;
  while (!rest.empty()) {
    const std::size_t end = rest.find(L'\\');
    const std::wstring_view name = rest.substr(0, end);
    rest = end == std::wstring_view::npos ? std::wstring_view() : rest.substr(end + 1);
    if (!IsValidName(name)) return Error(InvalidName);
    if (node->noMedium) return Error(ERROR_NOT_READY);
    const TNodePtr child = node->Child(name);
    if (!child && node != fComputer && node->IsFolder() && rest.empty()) return Error(ERROR_FILE_NOT_FOUND);
    if (!child) return Error(ERROR_PATH_NOT_FOUND);
    node = child;
  }
  pNode = std::move(node);
  return S_OK;
}

HRESULT SimulatedFileSystem::ResolveNewPlace(const std::wstring& pPath, TNodePtr& pFolder, std::wstring& pName) const {
  if (pPath.size() > MaxPath) return Error(ERROR_FILENAME_EXCED_RANGE);
  const std::size_t cut = pPath.rfind(L'\\');
  if (cut == std::wstring::npos) return Error(ERROR_ACCESS_DENIED); // beside the drives
  const HRESULT hr = Resolve(pPath.substr(0, cut), pFolder);
  if (hr == Error(ERROR_FILE_NOT_FOUND)) return Error(ERROR_PATH_NOT_FOUND);
  if (FAILED(hr)) return hr;
  if (pFolder == fComputer) return Error(InvalidName);
  if (!pFolder->IsFolder()) return Error(ERROR_PATH_NOT_FOUND);
  pName = pPath.substr(cut + 1);
  if (!IsValidName(pName)) return Error(InvalidName);
  return CheckListable(*pFolder);
}

HRESULT SimulatedFileSystem::CheckListable(const TNode& pNode) const {
  if (pNode.deleted) return Error(ERROR_PATH_NOT_FOUND);
  if (pNode.Drive().noMedium) return Error(ERROR_NOT_READY);
  return pNode.denied ? Error(ERROR_ACCESS_DENIED) : S_OK;
}

HRESULT SimulatedFileSystem::MoveNode(const TNodePtr& pNode, const TNodePtr& pFolder, const std::wstring& pName) {
  if (pNode->IsDriveOrComputer()) return Error(ERROR_ACCESS_DENIED);
  const TNodePtr from = pNode->parent.lock();
  if (from->denied || pFolder->denied) return Error(ERROR_ACCESS_DENIED);
  if (&pNode->Drive() != &pFolder->Drive()) return Error(NotSameDevice);
  for (TNodePtr above = pFolder; above; above = above->parent.lock()) {
    if (above == pNode) return Error(SharingViolation);
  }
  const TNodePtr standing = pFolder->Child(pName);
  if (standing && standing != pNode) return Error(ERROR_ALREADY_EXISTS);
  if (standing && pNode->object.name == pName) return S_OK;
  std::wstring old_path = PathOf(*pNode);
  from->children.erase(FoldName(pNode->object.name));
  pNode->object.name = pName;
  pNode->parent = pFolder;
  pFolder->children.emplace(FoldName(pName), pNode);
  const TFileChange change = ByKind(pNode->IsFolder(), TFileChange::FolderRename, TFileChange::FileRename);
  fNotices.Post({change, std::move(old_path), PathOf(*pNode)});
  return S_OK;
}

void SimulatedFileSystem::Unlink(const TNodePtr& pNode) {
  const TFileChange change = ByKind(pNode->IsFolder(), TFileChange::FolderDelete, TFileChange::FileDelete);
  fNotices.Post({change, PathOf(*pNode), {}});
  if (const TNodePtr parent = pNode->parent.lock()) parent->children.erase(FoldName(pNode->object.name));
  Forget(*pNode);
}

void SimulatedFileSystem::Forget(TNode& pNode) {
  pNode.deleted = true;
  fNodes.erase(pNode.id);
  for (const auto& [folded, child] : pNode.children) Forget(*child);
}

SimulatedFileSystem::TNodePtr SimulatedFileSystem::FindDrive(wchar_t pLetter) const {
  return fComputer->Child(std::wstring(1, pLetter) + L':');
}

SimulatedFileSystem::TNodePtr SimulatedFileSystem::NodeOf(TNodeId pId) const {
  const auto found = fNodes.find(pId);
  return found == fNodes.end() ? nullptr : found->second.lock();
}

SimulatedFileSystem::TNodePtr SimulatedFileSystem::AddNode(const TNodePtr& pParent, const std::wstring& pName,
                                                           TObjectFlags pFlags) {
  auto node = std::make_shared<TNode>();
  node->id = ++fLastId;
  node->parent = pParent;
  node->object.name = pName;
  node->object.flags = pFlags;
  node->object.created = node->object.changed = node->object.accessed = Tick();
  fNodes.emplace(node->id, node);
  if (pParent) pParent->children.emplace(FoldName(pName), node);
  return node;
}

std::wstring SimulatedFileSystem::PathOf(const TNode& pNode) const {
  const TNodePtr parent = pNode.parent.lock();
  return parent ? Combine(PathOf(*parent), pNode.object.name) : std::wstring();
}

} // namespace kiv::test
