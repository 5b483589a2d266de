/// The sessions of a client. Internal.
#pragma once

#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <utility>

#include <fokrazo/client_options.h>
#include <fokrazo/session.h>
#include "lrpc/client/client_state.h"
#include "util/thread/event_count.h"

namespace vesk {

class Breaker;
struct CallProgress;

/// A bounded number of sessions, each made when it is first needed and lent to one thread at a time.
/// Thread-safety: any thread. Fork: what other threads of the parent had borrowed is abandoned in the child.
class SessionPool {
 public:
  static constexpr unsigned int kMost = 64;

  /// A borrowed session; goes back when the object is destroyed.
  class Lease {
   public:
    Lease() = default;
    Lease(Lease&& other) noexcept { *this = std::move(other); }
    Lease& operator=(Lease&& other) noexcept;
    ~Lease() { release(); }

    explicit operator bool() const { return m_session != nullptr; }
    LocalRpcSession& session() const { return *m_session; }
    void release();

   private:
    friend class SessionPool;
    Lease(SessionPool& pool, size_t place, LocalRpcSession& session)
        : m_pool(&pool), m_place(place), m_session(&session) {}

    SessionPool* m_pool = nullptr;
    size_t m_place = 0;
    LocalRpcSession* m_session = nullptr;
  };

  explicit SessionPool(const ClientOptions& options);
  /// Requires: nothing is lent.
  ~SessionPool();

  /// Waits for a session within the limits of the call, and, unless `breaker` is null, not for a daemon that
  /// has failed meanwhile. An empty lease then.
  Lease borrow(CallProgress& call, const Breaker* breaker);
  /// A session that is free now.
  Lease tryBorrow();
  /// Wakes all waiters.
  void wakeWaiters() { m_changed.notifyAll(); }
  /// Closes the connections of free sessions that were not used for that long.
  void closeIdle(std::chrono::milliseconds unusedFor);

 private:
  using Clock = std::chrono::steady_clock;

  struct Place {
    std::unique_ptr<LocalRpcSession> session;
    bool isLent = false;
    unsigned long forkGeneration = 0;  // when it was lent
    Clock::time_point lastUsed;
    bool isConnected = false;  // as it came back
  };
  using Places = std::array<Place, kMost>;

  // A place that is lent now, and its session, null if it has none yet.
  using Taken = std::pair<size_t, LocalRpcSession*>;

  std::optional<Taken> take();
  std::optional<Taken> takeIdle(Clock::time_point unusedSince);
  LocalRpcSession& makeSession(size_t place);
  void giveBack(size_t place, LocalRpcSession* session);

  const ClientOptions& m_options;
  const unsigned int m_size;
  ClientState<Places> m_places FOKRAZO_GUARDED_BY(clientsMutex());
  EventCount m_changed;
};

}  // namespace vesk
