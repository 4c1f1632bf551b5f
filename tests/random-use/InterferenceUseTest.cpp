#include "SessionTest.h"

class InterferenceUseTest : public SessionTest {
    Q_OBJECT
private slots:
    void sessionsGoAsThePlainModelSays_data() { sessions(35, 3000); }
    void sessionsGoAsThePlainModelSays() { playOne(Theme::Interference, 150); }
};

REGISTER_TEST(InterferenceUseTest)
#include "InterferenceUseTest.moc"
