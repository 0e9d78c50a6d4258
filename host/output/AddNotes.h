// Rows of the notes, handed to the current session's output as they are made.
#pragma once

#include "host/output/OutputText.h"

// `kind` is one of MCHost::OutputNote::Kind.
void AddNotes(int kind, MCHost::OutputText title, MCHost::OutputText text);

// Puts the row under a heading; rows of one heading are added one after the other.
void AddNotesWithGroup(int kind, MCHost::OutputText group, MCHost::OutputText title,
                       MCHost::OutputText text);
