#include "Messages.h"

#include "Logger.h"
#include "MessageObservers.h"
#include "ObserverList.h"
#include "Subscribers.h"

namespace memory_host {

namespace {

ObserverList<MessageObserver>& observers() {
    // Never destroyed: observers may live as long as static objects.
    static auto* const all = new ObserverList<MessageObserver>;
    return *all;
}

} // namespace

void addMessageObservers(std::vector<const void*>& listeners) {
    observers().appendTo(listeners);
}

} // namespace memory_host

using namespace memory_host;

MessageObserver::MessageObserver() {
    observers().add(this);
}

MessageObserver::~MessageObserver() {
    observers().remove(this);
}

void Messages::Show(const QString& text) {
    const QString line = text.simplified();
    if (line.isEmpty())
        return;
    Logger::Write(line.toStdString());
    if (observers().depth() >= deepestTelling)
        return;
    observers().tellEach([&](MessageObserver& observer) {
        callHandler([&] { observer.messageShown(line); }, "an observer failed to show a message: ");
        return true;
    });
}
