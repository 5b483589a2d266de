#include "lrpc/client/object_source.h"

#include <algorithm>

#include "lrpc/session/lookup.h"

namespace vesk {

namespace {

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
  m_type == DSUser ? session.startListUser() : session.startListGroup(false);
}

// The daemon's end of the list is the only end.
ADObject ListingSource::fetch(LocalRpcSession& session) {
  Lookup lookup(session, IPC_OP_GET_OBJECT2, m_type, scopeOf(m_flags), KeyName, std::string(NEXT_ENTRY),
                m_flags);
  if (lookup.askOnce() == VR_SUCCESS) return lookup.reply.getADObject();
  if (session.statusCode() == END_OF_LIST) setEnded();
  return ADObject();
}

ListingSource::~ListingSource() {
  if (!isOpen() || hasEnded() || session().socket() == -1) return;
  CallOptions goodbye;
  goodbye.deadline = kGoodbye;
  const CallStatus status = run(goodbye, false, [this](LocalRpcSession& session) {
    m_type == DSUser ? session.endListUser() : session.endListGroup();
  });
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
