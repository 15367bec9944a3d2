#include "PtyPair.h"
#include "SerialManager.h"

#include <QFile>
#include <QMetaMethod>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

// Every signal of a SerialManager as one readable entry, in emission order.
class SignalLog : public QObject
{
public:
    explicit SignalLog(SerialManager *manager)
    {
        connect(manager, &SerialManager::errorOccurred, this, [this](const QString &message) {
            add(QStringLiteral("error-occurred ") + message);
        });
        connect(manager, &SerialManager::portLost, this, [this](const QString &port) {
            add(QStringLiteral("port-lost ") + port);
        });
        connect(manager, &SerialManager::rawLineReceived, this, [this](double t, const QString &raw) {
            add(QStringLiteral("raw ") + raw, t);
        });
        connect(manager, &SerialManager::stateParsed, this, [this](double t, const QString &group, const QString &state) {
            add(QStringLiteral("state ") + group + u'/' + state, t);
        });
        connect(manager, &SerialManager::errorParsed, this, [this](double t, const QString &error) {
            add(QStringLiteral("error ") + error, t);
        });
        connect(manager, &SerialManager::lineParsed, this, [this](double t, const QMap<QString, double> &values) {
            QStringList pairs;
            for (auto it = values.cbegin(); it != values.cend(); ++it)
                pairs.append(it.key() + u'=' + QString::number(it.value(), 'g', 12));
            add(QStringLiteral("values ") + pairs.join(u','), t);
        });
        connect(manager, &SerialManager::unrecognizedParsed, this, [this](double t, const QString &text) {
            add(QStringLiteral("words ") + text, t);
        });
    }

    QStringList entries;
    QList<double> times;

    // The entries of one kind ("raw", "values", ...) without their prefix.
    QStringList of(const QString &kind) const
    {
        QStringList list;
        for (const QString &entry : entries) {
            if (entry.startsWith(kind + u' '))
                list.append(entry.mid(kind.size() + 1));
        }
        return list;
    }

private:
    void add(const QString &entry, double t = -1)
    {
        entries.append(entry);
        times.append(t);
    }
};

class TestSerialManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void signalsKeepTheirOrder();
    void exampleLineEmitsInProtocolOrder();
    void framingOverThePort_data();
    void framingOverThePort();
    void crLfAndLfGiveTheSameResult();
    void timestamps();
    void reopenDropsThePartialLine();
    void portNameMayBeALink();
    void openFailureIsReported();
    void vanishingPortIsReportedAndClosed();
    void receiverMayCloseMidBatch();
    void nestedBytesDuringEmission();
    void refreshPortsPublishesTheList();
    void badInput_data();
    void badInput();
    void megabyteLine();
    void streamWithoutLineFeeds();

private:
    bool openOnPty();
    bool writeLarge(const QByteArray &bytes);

    QScopedPointer<PtyPair> m_pty;
    QScopedPointer<SerialManager> m_manager;
    QScopedPointer<SignalLog> m_log;
};

void TestSerialManager::init()
{
    m_pty.reset(new PtyPair);
    QVERIFY(m_pty->isValid());
    m_manager.reset(new SerialManager);
    m_log.reset(new SignalLog(m_manager.data()));
}

void TestSerialManager::cleanup()
{
    m_log.reset();
    m_manager.reset();
    m_pty.reset();
}

bool TestSerialManager::openOnPty()
{
    SerialSettings settings;
    settings.portName = m_pty->slavePath();
    return m_manager->open(settings);
}

// The pseudo-terminal takes only a few kilobytes at a time: feed it while
// the event loop lets the manager read.
bool TestSerialManager::writeLarge(const QByteArray &bytes)
{
    const int fd = m_pty->masterFd();
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + done, size_t(qMin<qsizetype>(bytes.size() - done, 65536)));
        if (n > 0)
            done += n;
        else if (n < 0 && errno != EAGAIN && errno != EINTR)
            return false;
        else
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    return true;
}

void TestSerialManager::signalsKeepTheirOrder()
{
    const QMetaObject *meta = &SerialManager::staticMetaObject;
    const char *const signatures[] = {
        "errorOccurred(QString)",
        "portsChanged(QStringList)",
        "lineParsed(double,QMap<QString,double>)",
        "stateParsed(double,QString,QString)",
        "errorParsed(double,QString)",
        "rawLineReceived(double,QString)",
        "unrecognizedParsed(double,QString)",
    };
    for (int i = 0; i < 7; ++i) {
        const int index = meta->indexOfSignal(signatures[i]);
        QVERIFY2(index >= 0, signatures[i]);
        QCOMPARE(index - meta->methodOffset(), i);
    }
}

void TestSerialManager::exampleLineEmitsInProtocolOrder()
{
    QVERIFY(openOnPty());
    QVERIFY(m_pty->write("12.5 RPM=3000 TEMP=71.2 ST_MODE=RUN ERR=E_OVERHEAT hello\n"));
    const QStringList expected = {
        "raw 12.5 RPM=3000 TEMP=71.2 ST_MODE=RUN ERR=E_OVERHEAT hello",
        "state MODE/RUN",
        "error E_OVERHEAT",
        "values RPM=3000,TEMP=71.2",
        "words hello",
    };
    QTRY_COMPARE(m_log->entries, expected);
    QCOMPARE(m_log->times, QList<double>(5, 12.5));
}

void TestSerialManager::framingOverThePort_data()
{
    QTest::addColumn<QByteArrayList>("writes");
    QTest::addColumn<QStringList>("raw");

    QTest::newRow("two lines in one write") << QByteArrayList{"A=1\nB=2\n"} << QStringList{"A=1", "B=2"};
    QTest::newRow("one line over two writes") << QByteArrayList{"RPM=30", "00 TEMP=1\n"} << QStringList{"RPM=3000 TEMP=1"};
    QTest::newRow("CR LF endings") << QByteArrayList{"A=1\r\nB=2\r\n"} << QStringList{"A=1", "B=2"};
    QTest::newRow("empty and blank lines skipped") << QByteArrayList{"\n\r\n  \t \nA=1\n"} << QStringList{"A=1"};
    QTest::newRow("white space around the line trimmed") << QByteArrayList{"  A=1 B=2 \t\r\n"} << QStringList{"A=1 B=2"};
}

void TestSerialManager::framingOverThePort()
{
    QFETCH(QByteArrayList, writes);
    QFETCH(QStringList, raw);
    QVERIFY(openOnPty());
    for (const QByteArray &bytes : writes)
        QVERIFY(m_pty->write(bytes));
    QTRY_COMPARE(m_log->of(QStringLiteral("raw")), raw);
}

void TestSerialManager::crLfAndLfGiveTheSameResult()
{
    QVERIFY(openOnPty());
    QVERIFY(m_pty->write("7 A=1 ST_G=S ERR=E word\r\n"));
    QTRY_COMPARE(m_log->entries.size(), 5);
    const QStringList withCr = m_log->entries;
    m_log->entries.clear();
    QVERIFY(m_pty->write("7 A=1 ST_G=S ERR=E word\n"));
    QTRY_COMPARE(m_log->entries, withCr);
}

void TestSerialManager::timestamps()
{
    m_manager->processBytes("A=1\n");
    QCOMPARE(m_log->times.last(), 0.0); // never opened: no clock yet

    QVERIFY(openOnPty());
    QVERIFY(m_pty->write("1e3 A=1\nA=2\n-4 A=3\n"));
    QTRY_COMPARE(m_log->of(QStringLiteral("values")).size(), 4);
    QCOMPARE(m_log->times.at(2), 1000.0);
    const double elapsed = m_log->times.at(4);
    QVERIFY(elapsed >= 0.0);
    QVERIFY(elapsed != 1000.0);
    QCOMPARE(m_log->times.at(6), -4.0);
}

void TestSerialManager::reopenDropsThePartialLine()
{
    QVERIFY(openOnPty());
    QVERIFY(m_pty->write("X=0\nA=1"));
    QTRY_COMPARE(m_log->of(QStringLiteral("raw")), QStringList{"X=0"});
    QVERIFY(openOnPty()); // open on an open manager reopens
    QVERIFY(m_manager->isOpen());
    QVERIFY(m_pty->write("B=2\n"));
    QTRY_COMPARE(m_log->of(QStringLiteral("raw")), QStringList({"X=0", "B=2"}));
}

void TestSerialManager::portNameMayBeALink()
{
    QTemporaryDir dir;
    const QString link = dir.filePath(QStringLiteral("ttyBENCH"));
    QVERIFY(QFile::link(m_pty->slavePath(), link));
    SerialSettings settings;
    settings.portName = link;
    QVERIFY2(m_manager->open(settings), qPrintable(m_log->entries.join(u'\n')));
    QVERIFY(m_pty->write("A=1\n"));
    QTRY_COMPARE(m_log->of(QStringLiteral("values")), QStringList{"A=1"});
}

void TestSerialManager::openFailureIsReported()
{
    SerialSettings settings;
    settings.portName = QStringLiteral("/nonexistent/ttyNOPE");
    QSignalSpy errors(m_manager.data(), &SerialManager::errorOccurred);
    QVERIFY(!m_manager->open(settings));
    QVERIFY(!m_manager->isOpen());
    QCOMPARE(errors.count(), 1);
    QVERIFY(!errors.first().first().toString().isEmpty());
}

void TestSerialManager::vanishingPortIsReportedAndClosed()
{
    QVERIFY(openOnPty());
    QSignalSpy errors(m_manager.data(), &SerialManager::errorOccurred);
    QSignalSpy lost(m_manager.data(), &SerialManager::portLost);
    QVERIFY(m_pty->write("A=1\n"));
    QTRY_COMPARE(m_log->of(QStringLiteral("values")), QStringList{"A=1"});
    m_pty->close();
    QTRY_COMPARE(lost.count(), 1);
    QVERIFY(errors.count() >= 1);
    QVERIFY(!m_manager->isOpen());
    QCOMPARE(lost.first().first().toString(), m_manager->portName());
    // The error comes first, then the loss.
    const qsizetype error = m_log->entries.indexOf(QRegularExpression(QStringLiteral("error-occurred .*")));
    QVERIFY(error >= 0);
    QVERIFY(error < m_log->entries.indexOf(QRegularExpression(QStringLiteral("port-lost .*"))));
}

void TestSerialManager::receiverMayCloseMidBatch()
{
    QVERIFY(openOnPty());
    connect(m_manager.data(), &SerialManager::rawLineReceived, m_manager.data(), &SerialManager::close);
    m_manager->processBytes("A=1\nB=2\nC=3\n");
    QCOMPARE(m_log->of(QStringLiteral("raw")), QStringList{"A=1"});
    QCOMPARE(m_log->of(QStringLiteral("values")), QStringList{"A=1"}); // the current line still completes
    QVERIFY(!m_manager->isOpen());
}

// A receiver that runs the event loop (a dialog, a progress bar) lets new
// bytes in while a line is being emitted; the line must keep its own values.
void TestSerialManager::nestedBytesDuringEmission()
{
    bool nested = false;
    connect(m_manager.data(), &SerialManager::stateParsed, this, [this, &nested] {
        if (!nested) {
            nested = true;
            m_manager->processBytes("B=2 ST_H=T\n");
        }
    });
    m_manager->processBytes("A=1 ST_G=S ERR=E\nC=3\n");
    // The nested bytes arrived after C=3, so C=3 comes first.
    const QStringList expected = {
        "raw A=1 ST_G=S ERR=E", "state G/S", "raw C=3", "values C=3", "raw B=2 ST_H=T", "state H/T",
        "values B=2", "error E", "values A=1",
    };
    QCOMPARE(m_log->entries, expected);
}

void TestSerialManager::refreshPortsPublishesTheList()
{
    QSignalSpy spy(m_manager.data(), &SerialManager::portsChanged);
    m_manager->refreshPorts();
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.first().first().toStringList(), m_manager->availablePorts());
}

void TestSerialManager::badInput_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<QStringList>("words");

    const QString replacement(QChar::ReplacementCharacter);
    QTest::newRow("invalid UTF-8") << QByteArray("A=1 \xff\xfe B=2 caf\xc3\xa9\n") << QStringList{"A=1,B=2"}
                                   << QStringList{replacement + replacement + QStringLiteral(" caf\u00e9")};
    QTest::newRow("NUL bytes") << QByteArray("\0\0 A=1 B=\0\n", 11) << QStringList{"A=1"}
                               << QStringList{QString(2, QChar(0))};
    QTest::newRow("control characters") << QByteArray("\x01\x1b[2J A=1\n") << QStringList{"A=1"}
                                        << QStringList{QStringLiteral("\x01\x1b[2J")};
    QByteArray garbage;
    QRandomGenerator random(99);
    for (int i = 0; i < 200000; ++i)
        garbage.append(char(random.bounded(256)));
    QTest::newRow("binary garbage") << garbage + "\nA=1\n" << QStringList() << QStringList();
}

void TestSerialManager::badInput()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, values);
    QFETCH(QStringList, words);
    QVERIFY(openOnPty());
    QVERIFY(writeLarge(bytes + "END=1\n"));
    QTRY_VERIFY(m_log->of(QStringLiteral("values")).contains(QStringLiteral("END=1")));
    QVERIFY(m_manager->isOpen());
    if (!values.isEmpty()) {
        QCOMPARE(m_log->of(QStringLiteral("values")), values + QStringList{"END=1"});
        QCOMPARE(m_log->of(QStringLiteral("words")), words);
    } else {
        QVERIFY(m_log->of(QStringLiteral("values")).contains(QStringLiteral("A=1")));
    }
}

void TestSerialManager::megabyteLine()
{
    QVERIFY(openOnPty());
    const QByteArray filler(1 << 20, 'x');
    QVERIFY(writeLarge("A=1 " + filler + " B=2\nC=3\n"));
    QTRY_COMPARE(m_log->of(QStringLiteral("values")), QStringList({"A=1,B=2", "C=3"}));
    QCOMPARE(m_log->of(QStringLiteral("words")), QStringList{QString::fromLatin1(filler)});
}

void TestSerialManager::streamWithoutLineFeeds()
{
    QVERIFY(openOnPty());
    QByteArray endless;
    for (int i = 0; i < 100000; ++i)
        endless += "A=1 B=2 ";
    QVERIFY(writeLarge(endless));
    QVERIFY(m_pty->write("C=3"));
    QVERIFY(m_log->entries.isEmpty());
    QVERIFY(m_pty->write("\nD=4\n"));
    QTRY_COMPARE(m_log->of(QStringLiteral("values")), QStringList({"A=1,B=2,C=3", "D=4"}));
    QCOMPARE(m_log->of(QStringLiteral("raw")).first().size(), endless.size() + 3); // the trailing space stays inside the line
}

QTEST_GUILESS_MAIN(TestSerialManager)
#include "tst_serialmanager.moc"
