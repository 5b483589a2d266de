#include "lrpc/client/reply_cache.h"

#include <fokrazo/adobject.h>
#include <fokrazo/adserializer.h>

namespace vesk {

namespace {

// A view repeats the texts of its object.
size_t sizeOf(const ReplyCache::Answer& answer) {
  constexpr size_t kFixed = 512;  // the entry, its place in the index, the view
  if (!answer) return kFixed;
  const ADObject object = answer->VeskObj::getObject();
  const ADSerializer* const blob = object.serializer();
  return kFixed + (blob ? 2 * size_t{blob->size()} : 0);
}

}  // namespace

std::string ReplyCache::keyOf(DSObjectType type, const ObjectKey& key, int flags) {
  std::string text{static_cast<char>('0' + type), static_cast<char>('0' + (flags & ~CHECK_AD_FIRST)),
                   static_cast<char>('0' + key.kind())};
  switch (key.kind()) {
    case KeyName:
      return text += key.name();
    case KeyGuid:
      return text.append(reinterpret_cast<const char*>(key.guid().bytes()), Guid::kSize);
    case KeySid:
      return text += key.sid().bytes();
    case KeyId:
      break;
  }
  const uint32_t id = key.id();
  return text.append(reinterpret_cast<const char*>(&id), sizeof id);
}

// What is erased is destroyed after the lock is released.
void ReplyCache::State::erase(Entries::iterator entry, Entries& erased) {
  index.erase(entry->key);
  bytes -= entry->size;
  erased.splice(erased.begin(), entries, entry);
}

std::optional<ReplyCache::Answer> ReplyCache::find(const std::string& key) {
  Entries erased;
  const Lock lock(clientsMutex());
  State& state = m_state.get();
  const auto found = state.index.find(key);
  if (found == state.index.end()) return std::nullopt;
  const Entries::iterator entry = found->second;
  if (entry->end.hasPassed()) {
    state.erase(entry, erased);
    return std::nullopt;
  }
  state.entries.splice(state.entries.begin(), state.entries, entry);
  return entry->answer;
}

ReplyCache::Ticket ReplyCache::ticket() {
  const Lock lock(clientsMutex());
  return m_state.get().clears;
}

void ReplyCache::keep(Ticket ticket, const std::string& key, const Answer& answer) {
  Entries fresh;
  fresh.push_back({key, answer, sizeOf(answer) + key.size(),
                   Deadline::in(answer ? m_options.found : m_options.notFound)});
  if (fresh.front().size > m_options.bytes) return;
  Entries erased;
  const Lock lock(clientsMutex());
  State& state = m_state.get();
  if (ticket != state.clears) return;
  const auto old = state.index.find(key);
  if (old != state.index.end()) state.erase(old->second, erased);
  state.index.emplace(fresh.front().key, fresh.begin());
  state.bytes += fresh.front().size;
  state.entries.splice(state.entries.begin(), fresh);
  while (state.entries.size() > m_options.entries || state.bytes > m_options.bytes)
    state.erase(std::prev(state.entries.end()), erased);
}

void ReplyCache::clear() {
  Entries erased;
  const Lock lock(clientsMutex());
  State& state = m_state.get();
  ++state.clears;
  state.index.clear();
  state.bytes = 0;
  erased.swap(state.entries);
}

}  // namespace vesk
