#include "lrpc/client/client_lookup.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "lrpc/session/lookup.h"

namespace vesk {

namespace {

// An id is that of a Unix object.
LookupScope scopeFor(const Wanted& wanted, KeyKind kind) {
  return wanted.type == DSShadow || kind == KeyId ? UnixObjects : scopeOf(wanted.flags);
}

std::unique_ptr<Lookup> makeLookup(LocalRpcSession& session, const Wanted& wanted, const ObjectKey& key) {
  const auto made = [&](const auto& value) {
    return std::make_unique<Lookup>(session, IPC_OP_GET_OBJECT, wanted.type, scopeFor(wanted, key.kind()),
                                    key.kind(), value, wanted.flags);
  };
  switch (key.kind()) {
    case KeyId:
      return made(static_cast<int>(key.id()));
    case KeySid:
      return made(key.sid());
    case KeyGuid:
      return made(key.guid());
    case KeyName:
      break;
  }
  return made(key.name());
}

// The exception that follows the status block of a failure.
std::string failureText(const IPCReply& reply) {
  if (!reply.hasMore()) return {};
  try {
    reply.getAndThrowIPCException();
  } catch (const VESKException& failure) {
    return failure.what();
  }
}

// Takes the reply of a lookup that was answered with that result.
void takeObject(ClientCall& call, const Lookup& lookup, ValidationResult result, ADObject& object) {
  if (result == VR_SUCCESS)
    object = lookup.reply.getADObject();
  else
    call.setText(failureText(lookup.reply));
}

// A success reply without an object.
CallStatus unlessEmpty(CallStatus status, const ADObject& object) {
  if (status.ok() && object.isEmpty()) status.outcome = CallOutcome::NotFound;
  return status;
}

CallStatus askOn(LocalRpcSession& session, ClientCall& call, const Wanted& wanted, const ObjectKey& key,
                 ADObject& object) {
  CallStatus status = call.runWith(session, [&](LocalRpcSession& own) {
    const std::unique_ptr<Lookup> lookup = makeLookup(own, wanted, key);
    takeObject(call, *lookup, lookup->ask(), object);
  });
  return unlessEmpty(std::move(status), object);
}

// The lookups of one call: on each of its sessions one request is under way, and the replies are read in
// order.
class Lanes {
 public:
  Lanes(ClientCore& core, const Wanted& wanted, const std::vector<ObjectKey>& keys,
        const CallOptions& options, Deadline deadline)
      : m_core(core), m_wanted(wanted), m_keys(keys), m_options(options), m_deadline(deadline) {}

  // Takes that session, and as many more as are free and needed.
  void open(SessionPool::Lease first) {
    m_lanes.reserve(std::min<size_t>(m_keys.size(), m_core.options.sessions));
    m_lanes.emplace_back(std::move(first));
    while (m_lanes.size() < m_lanes.capacity()) {
      SessionPool::Lease lease = m_core.pool.tryBorrow();
      if (!lease) break;
      m_lanes.emplace_back(std::move(lease));
    }
  }

  void run(const TakeObject& take) {
    size_t sent = 0;
    while (sent < std::min(m_lanes.size(), m_keys.size()) && send(sent)) ++sent;
    // A process with few descriptors left goes on with the connections that it has.
    while (m_lanes.size() > std::max<size_t>(sent, 1)) m_lanes.pop_back();
    for (size_t i = 0; i < m_keys.size(); ++i) {
      ADObject object;
      const CallStatus status = receive(i, object);
      if (i + m_lanes.size() < m_keys.size()) send(i + m_lanes.size());
      take(i, status, object);
    }
  }

 private:
  struct Lane {
    explicit Lane(SessionPool::Lease own) : lease(std::move(own)) {}

    SessionPool::Lease lease;
    std::optional<ClientCall> call;
    std::unique_ptr<Lookup> lookup;  // null if it could not be sent
  };

  Lane& laneOf(size_t index) { return m_lanes[index % m_lanes.size()]; }

  // False if the request could not be sent; receive tries again.
  bool send(size_t index) {
    Lane& lane = laneOf(index);
    lane.lookup.reset();
    ClientCall& call = lane.call.emplace(m_core, m_wanted.operation, m_options, m_deadline);
    if (m_core.breaker.isOpen()) return false;
    const CallScope scope(lane.lease.session(), call.progress());
    try {
      std::unique_ptr<Lookup> lookup = makeLookup(lane.lease.session(), m_wanted, m_keys[index]);
      lookup->send();
      lane.lookup = std::move(lookup);
    } catch (const VESKException&) {
    } catch (const std::bad_alloc&) {
    }
    return lane.lookup != nullptr;
  }

  CallStatus receive(size_t index, ADObject& object) {
    Lane& lane = laneOf(index);
    if (lane.lookup) {
      CallStatus status = lane.call->runWith(lane.lease.session(), [&](LocalRpcSession&) {
        takeObject(*lane.call, *lane.lookup, lane.lookup->receive(), object);
      });
      lane.lookup.reset();
      if (isFinal(status)) return unlessEmpty(std::move(status), object);
    }
    object = ADObject();
    ClientCall& again = lane.call.emplace(m_core, m_wanted.operation, m_options, m_deadline);
    if (!again.admit()) return again.status();
    return askOn(lane.lease.session(), again, m_wanted, m_keys[index], object);
  }

  // Whether a second attempt is no use.
  static bool isFinal(const CallStatus& status) {
    return status.outcome != CallOutcome::DaemonAway && status.outcome != CallOutcome::MalformedReply;
  }

  ClientCore& m_core;
  const Wanted& m_wanted;
  const std::vector<ObjectKey>& m_keys;
  const CallOptions& m_options;
  const Deadline m_deadline;
  std::vector<Lane> m_lanes;
};

}  // namespace

bool isNoKey(const ObjectKey& key) {
  switch (key.kind()) {
    case KeyName:
      return key.name().empty() || key.name() == NEXT_ENTRY;
    case KeySid:
      return key.sid().isNull();
    case KeyGuid:
    case KeyId:
      break;
  }
  return false;
}

CallStatus notFoundStatus(const char* operation) {
  CallStatus status;
  status.outcome = CallOutcome::NotFound;
  status.operation = operation;
  return status;
}

CallStatus findObject(ClientCore& core, const Wanted& wanted, const ObjectKey& key,
                      const CallOptions& options, Deadline deadline, ADObject& object) {
  if (isNoKey(key)) return notFoundStatus(wanted.operation.name);
  ClientCall call(core, wanted.operation, options, deadline);
  if (!call.begin()) return call.status();
  const SessionPool::Lease lease = call.takeLease();
  return askOn(lease.session(), call, wanted, key, object);
}

void findObjects(ClientCore& core, const Wanted& wanted, const std::vector<ObjectKey>& keys,
                 const CallOptions& options, const TakeObject& take) {
  if (keys.empty()) return;
  ClientCall call(core, wanted.operation, options);
  if (!call.begin()) {
    for (size_t i = 0; i < keys.size(); ++i) take(i, call.status(), ADObject());
    return;
  }
  Lanes lanes(core, wanted, keys, options, call.progress().deadline);
  lanes.open(call.takeLease());
  lanes.run(take);
}

}  // namespace vesk
