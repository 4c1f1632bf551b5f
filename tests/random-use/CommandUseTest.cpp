#include "SessionTest.h"

class CommandUseTest : public SessionTest {
    Q_OBJECT
private slots:
    void sessionsGoAsThePlainModelSays_data() { sessions(35, 1000); }
    void sessionsGoAsThePlainModelSays() { playOne(Theme::Commands, 150); }
};

REGISTER_TEST(CommandUseTest)
#include "CommandUseTest.moc"
