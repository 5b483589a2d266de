// Looks up many users at once: all threads share one client, and each learns what became of its call. (A
// program that only wants many answers quickly needs no threads: see Client::users.)
// usage: threads SOCKET NAME...
#include <fokrazo.h>

#include <atomic>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int kThreads = 4;

/// A name and its answer, written by one thread and read after all threads have ended.
struct Question {
  std::string name;
  std::string answer;
};

std::string askFor(vesk::Client& client, const std::string& name) {
  const auto user = client.user(name);
  return user ? std::to_string(user->getId()) : vesk::textOf(user.status().outcome);
}

void work(vesk::Client& client, std::vector<Question>& questions, std::atomic<size_t>& next) {
  for (size_t i; (i = next++) < questions.size();) questions[i].answer = askFor(client, questions[i].name);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "usage: threads SOCKET NAME...\n";
    return 2;
  }
  vesk::ClientOptions options;
  options.socketPath = argv[1];
  options.trustedPeer.reset();
  vesk::Client client(options);
  std::vector<Question> questions;
  for (int i = 2; i < argc; ++i) questions.push_back({argv[i], ""});
  std::atomic<size_t> next{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i)
    threads.emplace_back(work, std::ref(client), std::ref(questions), std::ref(next));
  for (std::thread& thread : threads) thread.join();
  for (const Question& question : questions) std::cout << question.name << ' ' << question.answer << '\n';
}
