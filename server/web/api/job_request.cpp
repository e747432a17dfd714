#include "server/web/api/job_request.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <nlohmann/json.hpp>
#include <utility>

#include "server/queue/day_time.h"
#include "server/queue/shown_text.h"

namespace rastrel::server::web {
namespace {

constexpr std::array<std::string_view, 9> Orders{
    "id", "submitted", "ended", "title", "owner", "device", "state", "priority", "pages"};

Failure Bad(std::string why) { return FailureOf(std::move(why), FailureCode::BadInput); }

Expected<void> TakeStates(std::string_view text, std::vector<JobState>& states) {
  for (;;) {
    const std::size_t comma = text.find(',');
    JobState state{};
    if (!StateOf(std::string(text.substr(0, comma)), state))
      return Bad("state: there is no state '" + std::string(text.substr(0, comma)) + "'");
    states.push_back(state);
    if (comma == text.npos) return {};
    text.remove_prefix(comma + 1);
  }
}

// A day, or milliseconds since 1970 as answers have them.
Expected<void> TakeTime(const Request& request, const char* name, int later, Time& time) {
  const std::string& text = request.Query(name);
  if (text.empty()) return {};
  constexpr std::int64_t Latest = 253402300800000;  // the year 10000
  if (const auto number = WholeNumber(text, 1, Latest)) {
    time = *number;
    return {};
  }
  const auto day = BeginOfDay(text, later);
  if (!day) return Bad(std::string(name) + ": " + day.Error().why);
  time = *day;
  return {};
}

Expected<void> TakeNumber(const Request& request, const char* name, int least, int greatest,
                          int& value) {
  const std::string& text = request.Query(name);
  if (text.empty()) return {};
  const auto number = WholeNumber(text, least, greatest);
  if (!number)
    return Bad(std::string(name) + ": give a whole number from " + std::to_string(least) + " to " +
               std::to_string(greatest));
  value = static_cast<int>(*number);
  return {};
}

Expected<void> TakeOrder(const Request& request, JobFilter& filter) {
  const std::string& order = request.Query("order");
  if (!order.empty()) {
    if (std::ranges::find(Orders, order) == Orders.end())
      return Bad("order: jobs can't be sorted by '" + order + "'");
    filter.orderBy = order;
  }
  const std::string& descending = request.Query("descending");
  if (!descending.empty() && descending != "true" && descending != "false")
    return Bad("descending: give true or false");
  filter.descending = descending != "false";
  return {};
}

// No user has a name with a line end.
constexpr const char* NoOwner = "\n";

}  // namespace

std::optional<std::int64_t> WholeNumber(std::string_view text, std::int64_t least,
                                        std::int64_t greatest) {
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  if (read.ec != std::errc() || read.ptr != end || number < least || number > greatest)
    return std::nullopt;
  return number;
}

std::optional<std::string> BodyField(const Request& request, const std::string& name) {
  for (const auto& [key, value] : request.form)
    if (key == name) return value;
  // Not an ordered one: that looks through all members for each.
  const auto object = nlohmann::json::parse(request.body, nullptr, false);
  if (!object.is_object() || !object.contains(name)) return std::nullopt;
  const auto& value = object[name];
  if (value.is_string()) return value.get<std::string>();
  if (value.is_number_integer()) return value.dump();
  return std::nullopt;
}

Expected<JobFilter> FilterOf(const Request& request, int usualLimit, int greatestLimit) {
  JobFilter filter;
  filter.limit = usualLimit;
  if (!request.Query("state").empty())
    if (auto taken = TakeStates(request.Query("state"), filter.states); !taken)
      return taken.Error();
  filter.owner = request.Query("owner");
  if (const std::string visible = request.caller.VisibleOwner(); !visible.empty())
    filter.owner = filter.owner.empty() || filter.owner == visible ? visible : NoOwner;
  filter.device = request.Query("device");
  filter.text = request.Query("text");
  for (const auto& taken :
       {TakeTime(request, "from", 0, filter.from), TakeTime(request, "until", 1, filter.until),
        TakeOrder(request, filter), TakeNumber(request, "offset", 0, INT32_MAX, filter.offset),
        TakeNumber(request, "limit", 1, greatestLimit, filter.limit)})
    if (!taken) return taken.Error();
  return filter;
}

std::string MessageFor(const std::string& owner, const std::string& message) {
  return owner.empty() ? message : WithoutFolders(message);
}

std::string OptionFor(const std::string& owner, const std::string& name, const std::string& value) {
  const bool isFile = name == "template" || name == "data";
  return owner.empty() || !isFile ? value : value.substr(value.rfind('/') + 1);
}

FoundJob JobOf(Shop& shop, const Request& request) {
  const std::string& text = request.Place("id");
  FoundJob found;
  const auto id = WholeNumber(text, 1, INT64_MAX);
  if (id) {
    auto job = shop.queue.Find(*id, request.caller.VisibleOwner());
    if (!job) {
      found.refusal = AnswerTo(job.Error());
      return found;
    }
    found.job = *std::move(job);
  }
  if (!found.job) found.refusal = ErrorResponse(404, "not-found", "there is no job " + text);
  return found;
}

Response AnswerTo(const Failure& failure) {
  if (failure.code == FailureCode::BadInput)
    return ErrorResponse(400, "bad-request", Describe(failure));
  if (failure.what.empty() && failure.where.empty()) {
    if (failure.why.starts_with("there is no job"))
      return ErrorResponse(404, "not-found", failure.why);
    if (failure.why.starts_with("job ")) return ErrorResponse(409, "wrong-state", failure.why);
  }
  // What it says names files of this machine.
  return ErrorResponse(500, "failed", "the queue can't be used now");
}

}  // namespace rastrel::server::web
