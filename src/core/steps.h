#pragma once
// The actions of which the procedures' steps are made, and what they share.

#include "core/procedure.h"
#include "tree/file_system.h"

namespace ZnSteps {

using FS = ZnSMBNFSFileSystem;
using Command = ZnSMBNFSCommand;
using Outcome = ZnStepOutcome;

inline Outcome Refuse(Command& command, ZnNFSEnum::Status error) {
  command.error = error;
  return Outcome::Refused;
}

// One call of the file system, and nothing else.
template <void (FS::*Step)(Command*)>
Outcome Call(FS& filesystem, Command& command) {
  (filesystem.*Step)(&command);
  return Outcome::Called;
}

// Takes the step unless the check before it has found an error.
template <void (FS::*Check)(Command*), void (FS::*Step)(Command*)>
Outcome CheckThen(FS& filesystem, Command& command) {
  (filesystem.*Check)(&command);
  if (command.error != ZnNFSEnum::NFS_OK) return Outcome::Refused;
  return Call<Step>(filesystem, command);
}

template <ZnNameMatch match>
Outcome FindName(FS& filesystem, Command& command) {
  filesystem.NBFindByName(&command, match);
  return Outcome::Called;
}

// --- Finding ---
Outcome FindHandle(FS& filesystem, Command& command);
Outcome LookUpName(FS& filesystem, Command& command);
// The name of an entry that is to go. What "." and ".." lead to isn't an entry of the directory.
Outcome FindEntry(FS& filesystem, Command& command, const ZnUniString& name);

// --- Attributes ---
Outcome UpdateTopContents(FS& filesystem, Command& command);
Outcome UpdateAttributes(FS& filesystem, Command& command);
// The attributes that the command is to set, with a client's "now" worked out.
void TakeAttributes(Command& command, const ZnNFSSattr& attributes);
Outcome SetattrBegin(FS& filesystem, Command& command);
Outcome Truncate(FS& filesystem, Command& command);

// --- Data ---
Outcome ReadLink(FS& filesystem, Command& command);
Outcome Read(FS& filesystem, Command& command);
Outcome Write(FS& filesystem, Command& command);

// --- What is made ---
Outcome Create(FS& filesystem, Command& command);
Outcome MakeDirectory(FS& filesystem, Command& command);
Outcome FindMade(FS& filesystem, Command& command);
Outcome ListForMade(FS& filesystem, Command& command);
Outcome FindFileInTheWay(FS& filesystem, Command& command);
Outcome CreateLinkFile(FS& filesystem, Command& command);
Outcome ListForLinkFile(FS& filesystem, Command& command);
Outcome WriteLinkFile(FS& filesystem, Command& command);

// --- Names that are changed ---
Outcome TakeNewName(FS& filesystem, Command& command);
Outcome TakeNewLinkName(FS& filesystem, Command& command);
Outcome TakeEntryName(FS& filesystem, Command& command);
Outcome TakeRenameNames(FS& filesystem, Command& command);

// --- What goes, or moves ---
Outcome FindEntryToRemove(FS& filesystem, Command& command);
Outcome UpdateContentsToRemove(FS& filesystem, Command& command);
Outcome RenameSource(FS& filesystem, Command& command);
Outcome RenameSourceAgain(FS& filesystem, Command& command);
Outcome RenameTargetDirectory(FS& filesystem, Command& command);
Outcome RenameUpdateTargetDirectory(FS& filesystem, Command& command);
Outcome RenameUpdateTarget(FS& filesystem, Command& command);
Outcome Rename(FS& filesystem, Command& command);
Outcome LinkTargetDirectory(FS& filesystem, Command& command);
Outcome Link(FS& filesystem, Command& command);

}  // namespace ZnSteps
