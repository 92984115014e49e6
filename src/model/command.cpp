#include "model/command.h"

#include "model/session_base.h"
#include "model/upward.h"

ZnSMBNFSCommand::ZnSMBNFSCommand(const ZnInetAddr& callSource, uint32_t callXid, ZnSMBNFSCommandHandler* handler)
    : source(callSource), xid(callXid), handler_(handler) {}

ZnSMBNFSCommand::~ZnSMBNFSCommand() {
  if (handler_) handler_->CommandEnds(*this);
  if (session) session->RemoveCommand(this);
}
