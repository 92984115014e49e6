// Finding what a call is about.

#include "core/steps.h"

namespace {

bool NamesAreWellFormed(const ZnSMBNFSArguments& arguments) {
  return std::visit(
      [](const auto& args) {
        if constexpr (requires { args.WellFormed(); }) return args.WellFormed();
        return true;
      },
      arguments);
}

}  // namespace

namespace ZnSteps {

Outcome FindHandle(FS& filesystem, Command& command) {
  if (!NamesAreWellFormed(command.args)) return Refuse(command, ZnNFSEnum::NFSERR_ACCES);
  command.handle = ZnSMBNFSHandle(command.procedure->arguments.handle(command.args));
  return Call<&FS::NBFindByHandle>(filesystem, command);
}

Outcome LookUpName(FS& filesystem, Command& command) {
  command.name = command.As<ZnNFSDiropargs>().name;
  return FindName<ZnNameMatch::LookUp>(filesystem, command);
}

Outcome FindEntry(FS& filesystem, Command& command, const ZnUniString& name) {
  if (name == "." || name == "..") return Refuse(command, ZnNFSEnum::NFSERR_ACCES);
  command.name = name;
  return FindName<ZnNameMatch::Entry>(filesystem, command);
}

}  // namespace ZnSteps
