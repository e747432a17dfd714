#include "server/web/http/request.h"

#include <algorithm>
#include <array>

namespace rastrel::server::web {
namespace {

constexpr std::array<const char*, 4> MethodNames{"GET", "POST", "DELETE", "?"};
constexpr std::array<const char*, 4> RoleNames{"nobody", "see", "print", "manage"};

const std::string Nothing;

const std::string& FirstOf(const Fields& fields, std::string_view name) {
  const auto found = std::ranges::find(fields, name, &Fields::value_type::first);
  return found == fields.end() ? Nothing : found->second;
}

}  // namespace

const char* NameOf(Method method) { return MethodNames.at(static_cast<std::size_t>(method)); }

const char* NameOf(Role role) { return RoleNames.at(static_cast<std::size_t>(role)); }

bool RoleOf(std::string_view name, Role& role) {
  for (const Role one : {Role::See, Role::Print, Role::Manage})
    if (name == NameOf(one)) {
      role = one;
      return true;
    }
  return false;
}

const std::string& Request::Query(std::string_view name) const { return FirstOf(query, name); }
const std::string& Request::Header(std::string_view name) const { return FirstOf(headers, name); }
const std::string& Request::Cookie(std::string_view name) const { return FirstOf(cookies, name); }
const std::string& Request::Form(std::string_view name) const { return FirstOf(form, name); }

const std::string& Request::Place(const std::string& name) const {
  const auto found = places.find(name);
  return found == places.end() ? Nothing : found->second;
}

bool Request::HasQuery(std::string_view name) const {
  return std::ranges::find(query, name, &Fields::value_type::first) != query.end();
}

}  // namespace rastrel::server::web
