#include "runtime/sys_encoding.h"

#include <langinfo.h>

#include <clocale>

#include "runtime/codeset_converter.h"

ZnEncoding ZnSysEncoding::filesystem = ZnCodeset::Latin1;
ZnEncoding ZnSysEncoding::userdb = ZnCodeset::Latin1;
ZnEncoding ZnSysEncoding::dnsname = ZnCodeset::Latin1;
ZnEncoding ZnSysEncoding::interfacename = ZnCodeset::Latin1;
ZnEncoding ZnSysEncoding::passwordcrypt = ZnCodeset::Latin1;
ZnEncoding ZnSysEncoding::sysinfo = ZnCodeset::Latin1;
ZnEncoding ZnSysEncoding::inetaddr = ZnCodeset::Latin1;
ZnEncoding ZnSysEncoding::shell = ZnCodeset::Latin1;

unsigned ZnSysEncoding::filesystemopt = 0;
unsigned ZnSysEncoding::userdbopt = 0;
unsigned ZnSysEncoding::dnsnameopt = 0;
unsigned ZnSysEncoding::interfacenameopt = 0;
unsigned ZnSysEncoding::passwordcryptopt = 0;
unsigned ZnSysEncoding::sysinfoopt = 0;
unsigned ZnSysEncoding::inetaddropt = 0;
unsigned ZnSysEncoding::shellopt = 0;

ZnSysEncoding::ZnSysEncoding() {
  setlocale(LC_CTYPE, "");
  ZnEncoding encoding = ZnCodesetConverter::GetEncodingFromLocale(nl_langinfo(CODESET));
  for (ZnEncoding* each :
       {&filesystem, &userdb, &dnsname, &interfacename, &passwordcrypt, &sysinfo, &inetaddr, &shell}) {
    *each = encoding;
  }
  for (unsigned* each : {&filesystemopt, &userdbopt, &dnsnameopt, &interfacenameopt, &passwordcryptopt, &sysinfoopt,
                         &inetaddropt, &shellopt}) {
    *each = 0;
  }
}
