#include "lrpc/client/session_pool.h"

#include <algorithm>

#include "lrpc/client/breaker.h"
#include "lrpc/session/own_sockets.h"
#include "lrpc/wire/call_progress.h"

namespace vesk {

SessionPool::Lease& SessionPool::Lease::operator=(Lease&& other) noexcept {
  if (this == &other) return *this;
  release();
  m_pool = other.m_pool;
  m_place = other.m_place;
  m_session = std::exchange(other.m_session, nullptr);
  return *this;
}

void SessionPool::Lease::release() {
  if (LocalRpcSession* session = std::exchange(m_session, nullptr)) m_pool->giveBack(m_place, session);
}

SessionPool::SessionPool(const ClientOptions& options)
    : m_options(options), m_size(std::clamp(options.sessions, 1U, kMost)) {}

SessionPool::~SessionPool() = default;

// The first free place, so that the last ones are idle when there is little to do.
std::optional<SessionPool::Taken> SessionPool::take() {
  const Lock lock(clientsMutex());
  Places& places = m_places.get();
  const unsigned long generation = ownsockets::forkGeneration();
  for (size_t i = 0; i < m_size; ++i) {
    Place& place = places[i];
    if (place.isLent && place.forkGeneration == generation) continue;
    // Lent before a fork: the parent's threads do not exist here, and their session may be half changed. If
    // this very thread has it, its lease destroys it.
    if (place.isLent) FOKRAZO_LEAKS_ON_PURPOSE(place.session.release());
    place.isLent = true;
    place.forkGeneration = generation;
    return Taken(i, place.session.get());
  }
  return std::nullopt;
}

LocalRpcSession& SessionPool::makeSession(size_t place) {
  auto session =
      std::make_unique<LocalRpcSession>(m_options.socketPath, false, m_options.authenticateProcess);
  if (m_options.trustedPeer) session->setTrustedPeer(*m_options.trustedPeer);
  const Lock lock(clientsMutex());
  m_places.get()[place].session = std::move(session);
  return *m_places.get()[place].session;
}

SessionPool::Lease SessionPool::tryBorrow() {
  const std::optional<Taken> taken = take();
  if (!taken) return {};
  const auto [place, session] = *taken;
  try {
    return {*this, place, session ? *session : makeSession(place)};
  } catch (...) {
    giveBack(place, nullptr);
    throw;
  }
}

SessionPool::Lease SessionPool::borrow(CallProgress& call, const Breaker* breaker) {
  if (Lease lease = tryBorrow()) return lease;
  call.step = CallStep::WaitingForSession;
  for (;;) {
    const EventCount::Ticket ticket = m_changed.ticket();
    if (Lease lease = tryBorrow()) return lease;
    if (call.mustStop() || (breaker && breaker->isOpen())) {
      m_changed.notifyOne();  // what was meant for this thread
      return {};
    }
    m_changed.wait(ticket, call.nextLook());
  }
}

void SessionPool::giveBack(size_t place, LocalRpcSession* session) {
  const Clock::time_point now = Clock::now();
  std::unique_ptr<LocalRpcSession> abandoned;
  {
    const Lock lock(clientsMutex());
    Place& own = m_places.get()[place];
    if (own.session.get() == session) {
      own.isLent = false;
      own.isConnected = session && session->socket() != -1;
      own.lastUsed = now;
    } else {
      abandoned.reset(session);  // from before a fork
    }
  }
  m_changed.notifyOne();
}

std::optional<SessionPool::Taken> SessionPool::takeIdle(Clock::time_point unusedSince) {
  const Lock lock(clientsMutex());
  Places& places = m_places.get();
  for (size_t i = 0; i < m_size; ++i) {
    Place& place = places[i];
    if (place.isLent || !place.isConnected || place.lastUsed > unusedSince) continue;
    place.isLent = true;
    place.forkGeneration = ownsockets::forkGeneration();
    return Taken(i, place.session.get());
  }
  return std::nullopt;
}

void SessionPool::closeIdle(std::chrono::milliseconds unusedFor) {
  const Clock::time_point now = Clock::now();
  if (unusedFor > std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch())) return;
  const Clock::time_point since = now - std::max(unusedFor, unusedFor.zero());
  while (const std::optional<Taken> taken = takeIdle(since)) {
    taken->second->dropConnection();
    giveBack(taken->first, taken->second);
  }
}

}  // namespace vesk
