// The conversations of all operations, as a table.

#include <algorithm>
#include <iterator>

#include "smb/client/smb_client.h"

using Values = ZnSMBClientValues;

// Print and pass-through operations have no steps: nothing in the gateway needs them.
const ZnSMBClient::Step ZnSMBClient::kSteps[] = {
    {Values::StateOpenSession, Values::CmdNone, &ZnSMBClient::SendNegotiate},
    {Values::StateOpenSession, Values::CmdNegotiate, &ZnSMBClient::NegotiateReply},
    {Values::StateOpenSession, Values::CmdSessionSetupX, &ZnSMBClient::SessionSetupReply},
    {Values::StateOpenSession, Values::CmdTreeConnectX, &ZnSMBClient::IPCTreeReply},
    {Values::StateTreeConnect, Values::CmdTreeConnect, &ZnSMBClient::TreeConnectReply},
    {Values::StateTreeConnect, Values::CmdTreeConnectX, &ZnSMBClient::TreeConnectXReply},

    {Values::StateOpen, Values::CmdOpen, &ZnSMBClient::OpenReply},
    {Values::StateOpen, Values::CmdOpenX, &ZnSMBClient::OpenXReply},
    {Values::StateRead, Values::CmdRead, &ZnSMBClient::ReadReply},
    {Values::StateDownload, Values::CmdOpen, &ZnSMBClient::DownloadOpened},
    {Values::StateDownload, Values::CmdRead, &ZnSMBClient::DownloadReply},
    {Values::StateDownload, Values::CmdClose, &ZnSMBClient::ReplyAccepted},
    {Values::StateWrite, Values::CmdWrite, &ZnSMBClient::WriteReply},
    {Values::StateClose, Values::CmdClose, &ZnSMBClient::ReplyAccepted},
    {Values::StateFlush, Values::CmdFlush, &ZnSMBClient::ReplyAccepted},
    {Values::StateDelete, Values::CmdDelete, &ZnSMBClient::ReplyAccepted},
    {Values::StateRename, Values::CmdRename, &ZnSMBClient::ReplyAccepted},
    {Values::StateMove, Values::CmdMove, &ZnSMBClient::MoveReply},
    {Values::StateSetAttributes, Values::CmdSetAttributes, &ZnSMBClient::ReplyAccepted},
    {Values::StateSetTimes, Values::CmdSetTimes, &ZnSMBClient::ReplyAccepted},
    {Values::StateCreateDirectory, Values::CmdCreateDir, &ZnSMBClient::ReplyAccepted},
    {Values::StateDeleteDirectory, Values::CmdDeleteDir, &ZnSMBClient::ReplyAccepted},

    {Values::StateListDirectory, Values::CmdTrans2, &ZnSMBClient::ListDirectoryReply,
     &ZnSMBClient::ListDirectoryRefused},
    {Values::StateFileInfo, Values::CmdTrans2, &ZnSMBClient::FileInfoReply},
    {Values::StateSetFileInfo, Values::CmdTrans2, &ZnSMBClient::SetFileInfoReply},
    {Values::StateDiskSpace, Values::CmdTrans2, &ZnSMBClient::FSInfoReply, &ZnSMBClient::FSInfoRefused},
    {Values::StateDiskSpace, Values::CmdQueryDisk, &ZnSMBClient::DiskReply},
    {Values::StateTransaction, Values::CmdTrans, &ZnSMBClient::TransactionReply},

    {Values::StateListShares, Values::CmdTrans, &ZnSMBClient::ListSharesReply},
    {Values::StateListServers, Values::CmdTrans, &ZnSMBClient::ListServersReply},
    {Values::StateUserInfo, Values::CmdTrans, &ZnSMBClient::UserInfoReply},
    {Values::StateTime, Values::CmdTrans, &ZnSMBClient::ServerTimeReply},
};

const ZnSMBClient::Step* ZnSMBClient::FindStep(OperationState state, Command command) {
  const Step* step = std::find_if(std::begin(kSteps), std::end(kSteps),
                                  [&](const Step& each) { return each.state == state && each.command == command; });
  return step == std::end(kSteps) ? nullptr : step;
}
