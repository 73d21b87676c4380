// Every public header, and something of the library that is not in a header.
#include <kxAnyConverter.h>
#include <kxFile.h>
#include <kxFileExtension.h>
#include <kxLog.h>
#include <kxMessage.h>
#include <kxPlatform.h>
#include <kxString.h>
#include <kxUtils.h>

int main() {
    const kxMessage message(7, "answer", 42);
    int answer = 0;
    if (!getFromMessage(message, "answer", answer) || answer != 42) return 1;
    kxLog::info("%s has answer %d", kxFile::getFileName("/a/consumer").c_str(), answer);
    return kxPlatform::isX64() && !kxUtils::call("request") ? 0 : 1;
}
