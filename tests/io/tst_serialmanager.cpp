#include "PtyPair.h"
#include "SerialManager.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>


// Every signal of a SerialManager as one readable entry, in emission order.
class SignalLog : public QObject
{
public:
    explicit SignalLog(SerialManager *m)
    {
        connect(m, &SerialManager::errorOccurred, this, [this](const QString &text) { add(u"error-occurred " + text); });
        connect(m, &SerialManager::portLost, this, [this](const QString &port) { add(u"port-lost " + port); });
        connect(m, &SerialManager::rawLineReceived, this, [this](double t, const QString &raw) { add(u"raw " + raw, t); });
        connect(m, &SerialManager::stateParsed, this,
                [this](double t, const QString &group, const QString &state) { add(u"state " + group + u'/' + state, t); });
        connect(m, &SerialManager::errorParsed, this, [this](double t, const QString &id) { add(u"error " + id, t); });
        connect(m, &SerialManager::lineParsed, this, [this](double t, const QMap<QString, double> &values) {
            QStringList pairs;
            for (auto it = values.cbegin(); it != values.cend(); ++it)
                pairs.append(it.key() + u'=' + QString::number(it.value(), 'g', 12));
            add(u"values " + pairs.join(u','), t);
        });
        connect(m, &SerialManager::unrecognizedParsed, this, [this](double t, const QString &text) { add(u"words " + text, t); });
    }

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

    QStringList entries;
    QList<double> times;

private:
    void add(const QString &entry, double t = -1)
    {
        entries.append(entry);
        times.append(t);
    }
};

class tst_SerialManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_pty.reset(new PtyPair);
        QVERIFY(m_pty->isValid());
        m_manager.reset(new SerialManager);
        m_log.reset(new SignalLog(m_manager.data()));
    }

    void cleanup()
    {
        m_log.reset();
        m_manager.reset();
        m_pty.reset();
    }

    void exampleLineEmitsInProtocolOrder()
    {
        QVERIFY(openOnPty());
        QVERIFY(m_pty->write("12.5 RPM=3000 TEMP=71.2 ST_MODE=RUN ERR=E_OVERHEAT hello\n"));
        const QStringList expected = {"raw 12.5 RPM=3000 TEMP=71.2 ST_MODE=RUN ERR=E_OVERHEAT hello", "state MODE/RUN",
                                      "error E_OVERHEAT", "values RPM=3000,TEMP=71.2", "words hello"};
        QTRY_COMPARE(m_log->entries, expected);
        QCOMPARE(m_log->times, QList<double>(5, 12.5));
    }

    void framingOverThePort_data()
    {
        QTest::addColumn<QByteArrayList>("writes");
        QTest::addColumn<QStringList>("entries");

        QTest::newRow("two lines in one write") << QByteArrayList{"A=1\nB=2\n"}
                                                << QStringList{"raw A=1", "values A=1", "raw B=2", "values B=2"};
        QTest::newRow("one line over two writes") << QByteArrayList{"RPM=30", "00 x\n"}
                                                  << QStringList{"raw RPM=3000 x", "values RPM=3000", "words x"};
        const QStringList line = {"raw 7 A=1 ST_G=S ERR=E w", "state G/S", "error E", "values A=1", "words w"};
        QTest::newRow("CR LF and LF alike") << QByteArrayList{"7 A=1 ST_G=S ERR=E w\r\n", "7 A=1 ST_G=S ERR=E w\n"}
                                            << line + line;
        QTest::newRow("blank lines skipped, line trimmed") << QByteArrayList{"\n\r\n  \t \n  A=1 \t\r\n"}
                                                           << QStringList{"raw A=1", "values A=1"};
    }

    void framingOverThePort()
    {
        QFETCH(QByteArrayList, writes);
        QFETCH(QStringList, entries);
        QVERIFY(openOnPty());
        for (const QByteArray &bytes : writes)
            QVERIFY(m_pty->write(bytes));
        QTRY_COMPARE(m_log->entries, entries);
    }

    void leadingNumberOrElapsedTimeStamps()
    {
        m_manager->processBytes("A=1\n");
        QCOMPARE(m_log->times.last(), 0.0); // never opened: no clock yet

        QVERIFY(openOnPty());
        QVERIFY(m_pty->write("1e3 A=1\nA=2\n-4 A=3\n"));
        QTRY_COMPARE(m_log->of(QStringLiteral("values")).size(), 4);
        QCOMPARE(m_log->times.at(2), 1000.0);
        const double elapsed = m_log->times.at(4); // seconds since the port opened
        QVERIFY(elapsed >= 0.0 && elapsed < 1000.0);
        QCOMPARE(m_log->times.at(6), -4.0);
    }

    // Opening an open manager reopens it; the partial line is gone. The second
    // open goes through a symbolic link, as the simulator offers its device.
    void reopenDropsThePartialLine()
    {
        QVERIFY(openOnPty());
        QVERIFY(m_pty->write("X=0\nA=1"));
        QTRY_COMPARE(m_log->of(QStringLiteral("raw")), QStringList{"X=0"});
        QTemporaryDir dir;
        SerialSettings settings;
        settings.portName = dir.filePath(QStringLiteral("ttyBENCH"));
        QVERIFY(QFile::link(m_pty->slavePath(), settings.portName));
        QVERIFY2(m_manager->open(settings), qPrintable(m_log->entries.join(u'\n')));
        QVERIFY(m_pty->write("B=2\n"));
        QTRY_COMPARE(m_log->of(QStringLiteral("raw")), QStringList({"X=0", "B=2"}));
    }

    void portFailuresAreReported();
    void receiverMayCloseMidBatch()
    {
        QVERIFY(openOnPty());
        connect(m_manager.data(), &SerialManager::rawLineReceived, m_manager.data(), &SerialManager::close);
        m_manager->processBytes("A=1\nB=2\nC=3\n");
        // The current line still completes; the rest of the batch is dropped.
        QCOMPARE(m_log->entries, QStringList({"raw A=1", "values A=1"}));
        QVERIFY(!m_manager->isOpen());
    }

    // A receiver that runs the event loop (a dialog, a progress bar) lets new
    // bytes in while a line is being emitted; the line must keep its own values.
    void nestedBytesDuringEmission()
    {
        bool nested = false;
        connect(m_manager.data(), &SerialManager::stateParsed, this, [this, &nested] {
            if (!std::exchange(nested, true))
                m_manager->processBytes("B=2 ST_H=T\n");
        });
        m_manager->processBytes("A=1 ST_G=S ERR=E\nC=3\n");
        // The nested bytes arrived after C=3, so C=3 comes first.
        const QStringList expected = {
            "raw A=1 ST_G=S ERR=E", "state G/S", "raw C=3", "values C=3", "raw B=2 ST_H=T", "state H/T",
            "values B=2", "error E", "values A=1",
        };
        QCOMPARE(m_log->entries, expected);
    }

    void badInput_data();
    void badInput();

private:
    bool openOnPty()
    {
        SerialSettings settings;
        settings.portName = m_pty->slavePath();
        return m_manager->open(settings);
    }

    QScopedPointer<PtyPair> m_pty;
    QScopedPointer<SerialManager> m_manager;
    QScopedPointer<SignalLog> m_log;
};

// A failed open is reported once (not again by the port); a port that
// vanishes while open is reported, then closed and announced as lost.
void tst_SerialManager::portFailuresAreReported()
{
    SerialSettings settings;
    settings.portName = QStringLiteral("/nonexistent/ttyNOPE");
    QVERIFY(!m_manager->open(settings));
    QVERIFY(!m_manager->isOpen());
    QCOMPARE(m_log->entries.size(), 1);
    QVERIFY(m_log->entries.first().size() > QStringLiteral("error-occurred ").size());

    m_log->entries.clear();
    QVERIFY(openOnPty());
    QVERIFY(m_pty->write("A=1\n"));
    QTRY_COMPARE(m_log->of(QStringLiteral("values")), QStringList{"A=1"});
    m_pty->close();
    QTRY_COMPARE(m_log->of(QStringLiteral("port-lost")), QStringList{m_manager->portName()});
    QVERIFY(!m_manager->isOpen());
    const QStringList after = m_log->entries.mid(2); // after the line: the error first, then the loss
    QVERIFY(after.first().startsWith(u"error-occurred ") && after.last().startsWith(u"port-lost "));
}

void tst_SerialManager::badInput_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<QStringList>("words");

    // Long lines and binary garbage over a real port are the recorder's tests.
    const QString replacement(QChar::ReplacementCharacter);
    QTest::newRow("invalid UTF-8") << QByteArray("A=1 \xff\xfe B=2 caf\xc3\xa9\n") << QStringList{"A=1,B=2"}
                                   << QStringList{replacement + replacement + QStringLiteral(" caf\u00e9")};
    QTest::newRow("NUL bytes") << QByteArray("\0\0 A=1 B=\0\n", 11) << QStringList{"A=1"}
                               << QStringList{QString(2, QChar(0))};
    QTest::newRow("control characters") << QByteArray("\x01\x1b[2J A=1\n") << QStringList{"A=1"}
                                        << QStringList{QStringLiteral("\x01\x1b[2J")};
}

void tst_SerialManager::badInput()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, values);
    QFETCH(QStringList, words);
    QVERIFY(openOnPty());
    QVERIFY(m_pty->write(bytes + "END=1\n"));
    QTRY_VERIFY(m_log->of(QStringLiteral("values")).contains(QStringLiteral("END=1")));
    QVERIFY(m_manager->isOpen());
    QCOMPARE(m_log->of(QStringLiteral("values")), values + QStringList{"END=1"});
    QCOMPARE(m_log->of(QStringLiteral("words")), words);
}

QTEST_GUILESS_MAIN(tst_SerialManager)
#include "tst_serialmanager.moc"
