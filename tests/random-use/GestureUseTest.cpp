#include "SessionTest.h"

class GestureUseTest : public SessionTest {
    Q_OBJECT
private slots:
    void sessionsGoAsThePlainModelSays_data() { sessions(35, 2000); }
    void sessionsGoAsThePlainModelSays() { playOne(Theme::Gestures, 150); }
};

REGISTER_TEST(GestureUseTest)
#include "GestureUseTest.moc"
