#include <core/NetworkDomain.h>

#include <gtest/gtest.h>

#include <utility>

namespace kiv {
namespace {

TEST(NetworkDomain, IsWhatFollowsTheComputersName) {
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {
      {L"\\\\srv.corp.example", L"corp.example"},
      {L"\\\\srv.corp.example\\share\\dir.x", L"corp.example"},
      {L"\\\\srv.corp.example@SSL@8443\\share", L"corp.example"},
      {L"\\\\srv\\share.d", L""},
      {L"\\\\192.168.0.1\\share", L""},
      {L"\\\\fe80--1.ipv6-literal.net\\share", L""},
      {L"\\\\?\\C:\\a.b", L""},
      {L"\\\\.\\pipe.x", L""},
      {L"srv.corp.example", L""},
      {L"C:\\a.b", L""},
      {L"\\\\", L""},
      {L"", L""},
  };
  for (const auto& [name, domain] : cases) EXPECT_EQ(DomainOfNetworkName(name), domain) << name;
}

} // namespace
} // namespace kiv
