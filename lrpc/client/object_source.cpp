#include "lrpc/client/object_source.h"

#include <algorithm>

#include "lrpc/session/lookup.h"

namespace vesk {

namespace {

// How a listing of a type is opened, advanced and closed.
struct Listing {
  void (*open)(LocalRpcSession&);
  IPC_OPCODE next;
  void (*close)(LocalRpcSession&);
};

Listing listingOf(DSObjectType type) {
  using Session = LocalRpcSession;
  switch (type) {
    case DSUser:
      return {[](Session& s) { s.startListUser(); }, IPC_OP_GET_OBJECT2, [](Session& s) { s.endListUser(); }};
    case DSGroup:
      return {[](Session& s) { s.startListGroup(false); }, IPC_OP_GET_OBJECT2,
              [](Session& s) { s.endListGroup(); }};
    default:
      return {[](Session& s) { s.startListShadow(); }, IPC_OP_GET_OBJECT,
              [](Session& s) { s.endListShadow(); }};
  }
}

// How long a range that is left early may take to tell the daemon.
constexpr std::chrono::milliseconds kGoodbye(1000);

}  // namespace

ObjectSource::ObjectSource(ClientCore& core, const char* operation, const CallOptions& options)
    : m_core(core), m_operation(operation), m_options(options) {}

CallStatus ObjectSource::start() {
  ClientCall call(m_core, {m_operation}, m_options);
  if (!call.begin()) return call.status();
  SessionPool::Lease lease = call.takeLease();
  CallStatus status = call.runWith(lease.session(), [this](LocalRpcSession& session) { open(session); });
  if (status.ok()) m_lease = std::move(lease);
  return status;
}

CallStatus ObjectSource::next(ADObject& object) {
  if (!isOpen()) {
    CallStatus status = start();
    if (!status.ok()) return status;
  }
  CallStatus status = run(m_options, false, [&](LocalRpcSession& session) { object = fetch(session); });
  if (m_hasEnded)
    status.outcome = CallOutcome::Success;
  else if (status.outcome == CallOutcome::NotFound)  // says nothing about the end
    status.outcome = CallOutcome::Unavailable;
  else if (status.ok() && object.isEmpty())
    status.outcome = CallOutcome::MalformedReply;
  return status;
}

// --- Listings ---

void ListingSource::open(LocalRpcSession& session) {
  listingOf(m_type).open(session);
}

// The daemon's end of the list is the only end.
ADObject ListingSource::fetch(LocalRpcSession& session) {
  Lookup lookup(session, listingOf(m_type).next, m_type, scopeOf(m_flags), KeyName, std::string(NEXT_ENTRY),
                m_flags);
  if (lookup.askOnce() == VR_SUCCESS) return lookup.reply.getADObject();
  if (session.statusCode() == END_OF_LIST || session.lastResult() == VR_NO_MORE) setEnded();
  return ADObject();
}

ListingSource::~ListingSource() {
  if (!isOpen() || hasEnded() || session().socket() == -1) return;
  CallOptions goodbye;
  goodbye.deadline = kGoodbye;
  const CallStatus status = run(goodbye, false, listingOf(m_type).close);
  if (!status.ok()) session().dropConnection();
}

// --- Searches ---

void SearchSource::open(LocalRpcSession& session) {
  std::vector<const char*> names;
  for (const std::string& name : m_request.attributes) names.push_back(name.c_str());
  const bool isAll = names.empty();
  names.push_back(nullptr);
  m_handle =
      session.ldapPagedSearch(m_request.domain, m_request.base, m_request.filter,
                              isAll ? nullptr : names.data(), m_request.scope, m_request.pageSize, false);
}

ADObject SearchSource::fetch(LocalRpcSession& /*session*/) {
  ADObject object = m_handle->getNext();
  if (object.isEmpty()) setEnded();
  return object;
}

SearchSource::~SearchSource() {
  if (isOpen() && !hasEnded()) session().dropConnection();
}

}  // namespace vesk
