#include "host/output/AddNotes.h"

#include "host/output/IOutputSink.h"
#include "host/output/OutputNote.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

using MCHost::OutputText;

void AddNotes(int kind, OutputText title, OutputText text) {
  MCHost::CurrentSession().Output().AddNote({kind, {}, std::move(title), std::move(text)});
}

void AddNotesWithGroup(int kind, OutputText group, OutputText title, OutputText text) {
  MCHost::CurrentSession().Output().AddNote(
      {kind, std::move(group), std::move(title), std::move(text)});
}
