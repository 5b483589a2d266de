/// A search of the daemon whose objects come page by page.
#pragma once

#include <fokrazo/adobject.h>
#include <fokrazo/export.h>

namespace vesk {

class LocalRpcSession;

/// Hands out the objects of one search. Made by LocalRpcSession::ldapPagedSearch; the session must outlive
/// it. A copy shares the page that is held but not the place in it: only one copy may be advanced. The daemon
/// is not told of a handle that is dropped. Thread-safety: one thread at a time, the session's.
class FOKRAZO_API PagedSearchHandle {
 public:
  /// Over the daemon's number of a search that was begun on that session.
  PagedSearchHandle(LocalRpcSession* session, int handle);

  /// The next object; an empty one at the end, and after it. One exchange for each page, none for the objects
  /// in it. May be called again after an exception.
  /// @throws IPCException the daemon's failure; what LocalRpcSession::executeWithRetry throws
  ADObject getNext();

 private:
  void fetchPage();

  LocalRpcSession* m_session;
  int m_handle;
  bool m_finished = false;
  ADObjectList m_page;
  ADObjectList::iterator m_position;  // the next to hand out; means nothing while the page is empty
};

}  // namespace vesk
