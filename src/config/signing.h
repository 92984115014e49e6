#pragma once
// Whether the messages of a conversation carry a code that shows a change on the way.

enum class ZnSigning {
  Never,   // not even with a machine that insists: no conversation with that
  Auto,    // if the machine insists
  Always,  // else no conversation
};
