/// Where the objects of a range come from. Internal.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <fokrazo/adobject.h>
#include <fokrazo/call_status.h>
#include <fokrazo/client_options.h>
#include <fokrazo/paged_search.h>
#include <fokrazo/session_types.h>
#include "lrpc/client/client_call.h"

namespace vesk {

/// A listing or a search that the daemon has open for this client, on a session of its own. One thread at a
/// time.
class ObjectSource {
 public:
  ObjectSource(ClientCore& core, const char* operation, const CallOptions& options);
  virtual ~ObjectSource() = default;
  ObjectSource(const ObjectSource&) = delete;
  ObjectSource& operator=(const ObjectSource&) = delete;

  /// Fetches the next object; at the end it is empty. Not to be called after the end or a failure.
  CallStatus next(ADObject& object);

 protected:
  /// The two requests. The second one returns the next object, or calls setEnded.
  virtual void open(LocalRpcSession& session) = 0;
  virtual ADObject fetch(LocalRpcSession& session) = 0;

  /// Runs a task on the source's session, within one deadline.
  template <class Task>
  CallStatus run(const CallOptions& options, bool isRepeatable, Task task) {
    ClientCall call(m_core, {m_operation, isRepeatable, false, false, true}, options);
    return call.runWith(m_lease.session(), task);
  }
  bool isOpen() const { return static_cast<bool>(m_lease); }
  /// Whether the daemon has said that there is no further object.
  bool hasEnded() const { return m_hasEnded; }
  void setEnded() { m_hasEnded = true; }
  LocalRpcSession& session() const { return m_lease.session(); }

 private:
  CallStatus start();

  ClientCore& m_core;
  const char* m_operation;
  const CallOptions m_options;
  SessionPool::Lease m_lease;
  bool m_hasEnded = false;
};

/// The users, groups or shadow entries that the daemon lists.
class ListingSource : public ObjectSource {
 public:
  ListingSource(ClientCore& core, const char* operation, DSObjectType type, int flags,
                const CallOptions& options)
      : ObjectSource(core, operation, options), m_type(type), m_flags(flags) {}
  /// Tells the daemon, if the listing has not ended by itself.
  ~ListingSource() override;

 protected:
  void open(LocalRpcSession& session) override;
  ADObject fetch(LocalRpcSession& session) override;

 private:
  const DSObjectType m_type;
  const int m_flags;
};

/// What a search is for; as the arguments of Client::search.
struct SearchRequest {
  std::string domain;
  std::string base;
  std::string filter;
  std::vector<std::string> attributes;
  LdapSearchScopeType scope;
  int pageSize;
};

/// The objects that a search finds.
class SearchSource : public ObjectSource {
 public:
  SearchSource(ClientCore& core, SearchRequest request, const CallOptions& options)
      : ObjectSource(core, "search", options), m_request(std::move(request)) {}
  /// The daemon forgets an unfinished search with its connection.
  ~SearchSource() override;

 protected:
  void open(LocalRpcSession& session) override;
  ADObject fetch(LocalRpcSession& session) override;

 private:
  const SearchRequest m_request;
  std::optional<PagedSearchHandle> m_handle;
};

}  // namespace vesk
