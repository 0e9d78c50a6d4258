#include "host/output/AddNotes.h"

#include "host/output/IOutputSink.h"
#include "host/output/OutputNote.h"
#include "host/output/TellApart.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

using MCHost::OutputText;

namespace {

void Add(MCHost::OutputNote note) {
  MCHost::TellApart(note.fTitle);
  MCHost::TellApart(note.fText);
  MCHost::CurrentSession().Output().AddNote(std::move(note));
}

}  // namespace

void AddNotes(int kind, OutputText title, OutputText text) {
  Add({kind, {}, std::move(title), std::move(text)});
}

void AddNotesWithGroup(int kind, OutputText group, OutputText title, OutputText text) {
  Add({kind, std::move(group), std::move(title), std::move(text)});
}
