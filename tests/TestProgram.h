#pragma once

#include <QCoreApplication>
#include <QTest>

/// The limit of every wait in a test. Only a hang reaches it, even on a busy machine. Tests assert no
/// durations; benchmarks measure them.
inline constexpr int hangLimit = 300'000;  // ms

// QtTest's own waits give up after five seconds.
#undef QTRY_VERIFY
#define QTRY_VERIFY(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, hangLimit)
#undef QTRY_VERIFY2
#define QTRY_VERIFY2(condition, message) QTRY_VERIFY2_WITH_TIMEOUT(condition, message, hangLimit)
#undef QTRY_COMPARE
#define QTRY_COMPARE(actual, expected) QTRY_COMPARE_WITH_TIMEOUT(actual, expected, hangLimit)

namespace tidemark::testing {

/// A main function under a name. The tests of a folder are one program, which runs the one that is named.
class TestProgram final {
public:
    using Main = int (*)(int argc, char** argv);

    /// Makes `main` known for as long as the program runs. `name` may be qualified.
    TestProgram(const char* name, Main main);
};

/// Runs the test object with an application around it, as QtTest's own main functions do.
template <typename Test, typename Application>
int run(int argc, char** argv) {
    Application application(argc, argv);
    application.setAttribute(Qt::AA_Use96Dpi);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

}  // namespace tidemark::testing

/// In place of QTEST_GUILESS_MAIN and QTEST_MAIN: for a test without a screen, and for one with.
#define TIDEMARK_TEST(Test) TIDEMARK_TEST_MAIN(Test, (tidemark::testing::run<Test, QCoreApplication>))
#define TIDEMARK_GUI_TEST(Test) TIDEMARK_TEST_MAIN(Test, (tidemark::testing::run<Test, QGuiApplication>))

/// For a test with a main function of its own. Its arguments are those after the test's name.
#define TIDEMARK_TEST_MAIN(Test, main) TIDEMARK_TEST_PROGRAM(Test, main, __COUNTER__)
#define TIDEMARK_TEST_PROGRAM(Test, main, number) TIDEMARK_TEST_PROGRAM_(Test, main, number)
#define TIDEMARK_TEST_PROGRAM_(Test, main, number) \
    static const tidemark::testing::TestProgram testProgram##number(#Test, main);
