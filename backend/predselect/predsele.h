// The procedure library's only entry, and its debug flags.
#pragma once

extern "C" {

// Runs the command of the calling thread's current session: SELECTPRED when the command word begins
// with "SEL", else NAIVEBAYES. Everything that comes of it goes to the session's output.
// REQUIRES: a session is installed for this thread.
[[gnu::visibility("default")]] void predsele_();

// Dumps for debugging, written to standard error; all off by default.
[[gnu::visibility("default")]] extern bool display_settings;        // the specifications
[[gnu::visibility("default")]] extern bool display_feature_select;  // the selection component
[[gnu::visibility("default")]] extern bool display_naive_bayes;     // the Naive Bayes component
}
