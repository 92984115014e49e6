#pragma once
// A scripted server and a loop with a clock of its own, for the tests of those who talk to servers.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/standard_smb_server.h"
#include "support/virtual_loop.h"

// SMB commands as they stand in requests.
enum SmbCommand {
  kMkdir = 0x00,
  kRmdir = 0x01,
  kClose = 0x04,
  kFlush = 0x05,
  kDelete = 0x06,
  kRename = 0x07,
  kSetAttributes = 0x09,
  kRead = 0x0A,
  kWrite = 0x0B,
  kMove = 0x2A,
  kOpen = 0x2D,
  kReadX = 0x2E,
  kWriteX = 0x2F,
  kTrans2 = 0x32,
  kFindClose = 0x34,
  kOldTree = 0x70,
  kNegotiate = 0x72,
  kSetup = 0x73,
  kTree = 0x75,
  kQueryDisk = 0x80,
  kNtCreate = 0xA2,
};

using smb_script::DirEntry;
using smb_script::Refusal;
using smb_script::Reply;
using smb_script::Request;
using smb_script::TransReply;
using smb_script::U16;
using smb_script::U32;
using smb_script::U64;
using Messages = std::vector<std::string>;

class ScriptedServerTest : public testing::Test {
 protected:
  using Script = ScriptedSmbPeer::Script;

  ScriptedServerTest() {
    peer.script = [this](const Request& request) -> Messages {
      if (request.command != hangupcommand_ || hangups_ == 0) return server(request);
      hangups_--;
      peer.HangUp();
      return {};
    };
  }

  // Answers a command in this way from now on.
  void Replace(int command, Script script) { server.replaced[command] = std::move(script); }
  static Script Refuse(unsigned errorClass, unsigned code) {
    return [=](const Request& request) { return Messages{Refusal(request, errorClass, code)}; };
  }
  // The server keeps its answers to a command to itself until the test gives them.
  void Hold(int command) {
    Replace(command, [this](const Request& request) {
      held.push_back(request);
      return Messages();
    });
  }
  // Gives them all, as a server that behaves, and holds no more.
  void LetGo() {
    server.replaced.clear();
    for (const Request& request : std::exchange(held, {})) peer.Send(server(request).front());
    LetPass(10);
  }
  static Messages Silence(const Request&) { return {}; }
  // The server ends the connection instead of answering, `times` times.
  void HangUpOn(int command, int times) {
    hangupcommand_ = command;
    hangups_ = times;
  }
  // What the server was asked since the last look.
  std::vector<int> Asked() {
    std::vector<int> commands;
    for (; seen_ < peer.requests.size(); seen_++) commands.push_back(peer.requests[seen_].command);
    return commands;
  }
  // The last request, or one that many before it.
  const Request& Last(size_t before = 0) const { return peer.requests.at(peer.requests.size() - 1 - before); }
  // Lets the loop do what there is to do for some virtual milliseconds.
  void LetPass(uint32_t milliseconds) { loop.LetPass(milliseconds); }

  VirtualLoop loop;
  StandardSmbServer server;
  ScriptedSmbPeer peer{&loop};
  std::vector<Request> held;

 private:
  int hangupcommand_ = -1;
  int hangups_ = 0;
  size_t seen_ = 0;
};
