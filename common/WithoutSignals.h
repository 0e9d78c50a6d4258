// Keeps signals that other processes and terminals send from the threads started meanwhile: they
// are for the caller's, whose system calls they interrupt.
#pragma once

#include <csignal>
#include <initializer_list>

namespace MCCommon {

class WithoutSignals {
 public:
  WithoutSignals() {
    sigset_t sent;
    sigemptyset(&sent);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM, SIGUSR1, SIGUSR2}) {
      sigaddset(&sent, signal);
    }
    pthread_sigmask(SIG_BLOCK, &sent, &fBefore);
  }
  ~WithoutSignals() { pthread_sigmask(SIG_SETMASK, &fBefore, nullptr); }
  WithoutSignals(const WithoutSignals&) = delete;
  WithoutSignals& operator=(const WithoutSignals&) = delete;

 private:
  sigset_t fBefore;
};

}  // namespace MCCommon
