#include "Messages.h"

#include "Logger.h"
#include "MessageObservers.h"
#include "Subscribers.h"

using namespace memory_host;

MessageObserver::MessageObserver() {
    messageObservers().add(this);
}

MessageObserver::~MessageObserver() {
    messageObservers().remove(this);
}

void Messages::Show(const QString& text) {
    const QString line = text.simplified();
    if (line.isEmpty())
        return;
    Logger::Write(line.toStdString());
    if (messageObservers().depth() >= deepestTelling)
        return;
    messageObservers().tellEach([&](MessageObserver& observer) {
        callHandler([&] { observer.messageShown(line); }, "an observer failed to show a message: ");
        return true;
    });
}
