#include <doubles/OutsideChanges.h>

#include <core/FolderFunctions.h>
#include <platform/Handles.h>

#include <windows.h>

#include <chrono>
#include <random>
#include <thread>

namespace kiv::test {

namespace {

// Arguments: folder, kind, seed, count, path of the last file, changes a second.
constexpr wchar_t Script[] =
    LR"(use Time::HiRes qw(time sleep);my ($root,$kind,$seed,$count,$last,$rate)=@ARGV;chdir $root or die;srand $seed;)"
    LR"(my $since=time;sub pace{my $late=time-$since-$_[0]/$rate;if($late>.01){$since+=$late-.01}elsif($late<0){sleep .001}})"
    LR"(sub name{chr(97+int rand 12)}sub path{my $p='';$p.=name().'/' for 1..$_[0];$p.name()})"
    LR"(sub make{open(my $f,$_[0],$_[1]) or return 0;print $f 'x';1})"
    LR"(sub num{int(rand 2*$count).'.txt'}my @num=(sub{!-e $_[0]&&make('>',$_[0])},sub{!-e $_[1]&&rename $_[0],$_[1]},)"
    LR"(sub{-e $_[0]&&make('>>',$_[0])},sub{unlink $_[0]});)"
    LR"(for(my $n=0;$n<$count;){if($kind==2){$n++ if $num[int rand 4]->(num(),num());next})"
    LR"(if($kind){pace($n) if $rate;open(my $f,'>','f') or die;$n+=1+unlink 'f';next})"
    LR"(my $d=int rand 3;my $p=path($d);my $k=int rand 7;)"
    LR"(if($k<2){$n++ if !-d $p&&make('>',$p)}elsif($k==2){$n++ if mkdir $p}elsif($k==3){$n++ if rename $p,path(-d $p?$d:int rand 3)})"
    LR"(elsif($k==4){$n+=unlink $p}elsif($k==5){$n++ if -f $p&&make('>>',$p)}else{$n++ if rmdir $p}})"
    LR"(open(my $f,'>',$last))";

// Empty if there is none.
std::wstring NativePath(const std::wstring& path) {
  using TName = char*(CDECL*)(const wchar_t*);
  const auto call = reinterpret_cast<TName>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
  char* const name = call ? call(path.c_str()) : nullptr;
  if (!name) return {};
  std::wstring found(name, name + std::char_traits<char>::length(name)); // plain letters, in a temporary folder
  HeapFree(GetProcessHeap(), 0, name);
  return found;
}

bool StartNative(const std::wstring& folder, TOutsideChanges kind, unsigned seed, int count, const std::wstring& last,
                 int per_second) {
  constexpr wchar_t perl[] = LR"(Z:\usr\bin\perl)";
  const std::wstring native = NativePath(folder);
  if (native.empty() || !IsFile(perl)) return false;
  const std::wstring name = last.substr(last.find_last_of(L'\\') + 1);
  std::wstring command = std::wstring(perl) + L" -e \"" + Script + L"\" \"" + native + L"\" " +
                         std::to_wstring(static_cast<int>(kind)) + L" " + std::to_wstring(seed) + L" " +
                         std::to_wstring(count) + L" \"" + name + L"\" " + std::to_wstring(per_second);
  STARTUPINFOW start{};
  start.cb = sizeof(start);
  PROCESS_INFORMATION started{};
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &started)) {
    return false;
  }
  const TUniqueHandle process(started.hProcess);
  const TUniqueHandle thread(started.hThread);
  return true;
}

void ChangeAtRandom(const std::wstring& root, unsigned seed, int count) {
  std::mt19937 random(seed);
  const auto name = [&] { return std::wstring(1, static_cast<wchar_t>(L'a' + random() % 12)); };
  const auto path = [&](std::size_t depth) {
    std::wstring p = root;
    for (; depth > 0; --depth) p += L"\\" + name();
    return p + L"\\" + name();
  };
  for (int done = 0; done < count;) {
    const std::size_t depth = random() % 3;
    const std::wstring p = path(depth);
    const auto kind = random() % 6;
    if (kind < 2) {
      done += CreateEmptyFile(p) ? 1 : 0;
    } else if (kind == 2) {
      done += CreateDirectoryW(p.c_str(), nullptr) ? 1 : 0;
    } else if (kind == 3) {
      done += MoveFileW(p.c_str(), path(IsFolder(p) ? depth : random() % 3).c_str()) ? 1 : 0;
    } else if (kind == 4) {
      done += DeleteFileW(p.c_str()) ? 1 : 0;
    } else {
      done += RemoveDirectoryW(p.c_str()) ? 1 : 0;
    }
  }
}

void Pace(int done, int per_second, std::chrono::steady_clock::time_point& since) {
  using namespace std::chrono_literals;
  const std::chrono::duration<double> due(static_cast<double>(done) / per_second);
  const auto late =
      std::chrono::steady_clock::now() - since - std::chrono::duration_cast<std::chrono::nanoseconds>(due);
  if (late > 10ms) since += std::chrono::duration_cast<std::chrono::nanoseconds>(late - 10ms);
  if (late < 0ms) std::this_thread::sleep_for(1ms);
}

void ComeAndGo(const std::wstring& root, int count, int per_second) {
  auto since = std::chrono::steady_clock::now();
  for (int i = 0; i < count; i += 2) {
    if (per_second > 0) Pace(i, per_second, since);
    const std::wstring path = root + L"\\f";
    CreateEmptyFile(path);
    DeleteFileW(path.c_str());
  }
}

void ChangeNumbered(const std::wstring& root, unsigned seed, int count) {
  std::mt19937 random(seed);
  const auto path = [&] {
    return root + L"\\" + std::to_wstring(random() % (2 * static_cast<unsigned>(count))) + L".txt";
  };
  for (int done = 0; done < count;) {
    const std::wstring p = path();
    const auto kind = random() % 3;
    const bool changed = kind == 0   ? !IsFile(p) && CreateEmptyFile(p)
                         : kind == 1 ? MoveFileW(p.c_str(), path().c_str()) != FALSE
                                     : DeleteFileW(p.c_str()) != FALSE;
    done += changed ? 1 : 0;
  }
}

} // namespace

void ChangeFromOutside(const std::wstring& pFolder, TOutsideChanges pKind, unsigned pSeed, int pCount,
                       const std::wstring& pLast, int pPerSecond) {
  if (StartNative(pFolder, pKind, pSeed, pCount, pLast, pPerSecond)) return;
  std::thread([=] {
    if (pKind == TOutsideChanges::ComeAndGo) {
      ComeAndGo(pFolder, pCount, pPerSecond);
    } else if (pKind == TOutsideChanges::Numbered) {
      ChangeNumbered(pFolder, pSeed, pCount);
    } else {
      ChangeAtRandom(pFolder, pSeed, pCount);
    }
    CreateEmptyFile(pLast);
  }).detach();
}

} // namespace kiv::test
