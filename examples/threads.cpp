// Looks up many users at once: a session takes one request at a time, so each thread has its own.
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

std::string askFor(vesk::LocalRpcSession& session, const std::string& name) {
  try {
    return std::to_string(session.getUser(name, 0)->getId());
  } catch (const VESKException& error) {
    return std::string(error.className()) + ": " + error.what();
  }
}

void work(const char* socket, std::vector<Question>& questions, std::atomic<size_t>& next) {
  vesk::LocalRpcSession session(socket, false, false);
  for (size_t i; (i = next++) < questions.size();) questions[i].answer = askFor(session, questions[i].name);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "usage: threads SOCKET NAME...\n";
    return 2;
  }
  std::vector<Question> questions;
  for (int i = 2; i < argc; ++i) questions.push_back({argv[i], ""});
  std::atomic<size_t> next{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) threads.emplace_back(work, argv[1], std::ref(questions), std::ref(next));
  for (std::thread& thread : threads) thread.join();
  for (const Question& question : questions) std::cout << question.name << ' ' << question.answer << '\n';
}
