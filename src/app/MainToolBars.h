#pragma once

#include <QObject>
#include <QStringList>

QT_BEGIN_NAMESPACE
class QAction;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QMainWindow;
class QSlider;
class QToolBar;
class QToolButton;
QT_END_NAMESPACE

class ClickableLabel;

// The main window's three tool bars ("Controls", "Export", "I/O") and the
// controls on them. The window connects to the public members; this class
// only builds them and keeps their texts in step with the mode.
class MainToolBars : public QObject
{
    Q_OBJECT

public:
    explicit MainToolBars(QMainWindow *window);

    // Refills the port list, keeping a path the user typed.
    void setPorts(const QStringList &ports);
    QString portName() const;
    void setPortName(const QString &name);
    // The item data of the baud box; a rate not in the list is added.
    int baudRate() const;
    void setBaudRate(int rate);
    void setConnected(bool connected);
    // Stop/pause button and play button for the playing state.
    void setPlaying(bool playing);

    QToolBar *controlsBar = nullptr;
    QToolBar *exportBar = nullptr;
    QToolBar *ioBar = nullptr;

    QAction *designAction = nullptr;
    QAction *saveLayoutAction = nullptr;
    QAction *loadLayoutAction = nullptr;
    QComboBox *portBox = nullptr;
    QComboBox *baudBox = nullptr;
    QToolButton *connectButton = nullptr;
    QCheckBox *reconnectBox = nullptr; // off: a lost port stays closed
    QAction *recordAction = nullptr;
    QAction *stopAction = nullptr;
    QAction *playAction = nullptr;
    QDoubleSpinBox *speedBox = nullptr;

    QAction *exportSignalsAction = nullptr;
    QAction *exportEventsAction = nullptr;

    QCheckBox *useRecordingDefinitionsBox = nullptr;
    ClickableLabel *playbackFileLabel = nullptr;
    QSlider *positionSlider = nullptr;
    QLabel *timeLabel = nullptr;

private:
    QToolBar *addBar(QMainWindow *window, const QString &title, const QString &objectName);
    void addSpacer(QToolBar *bar);
    void buildControls(QMainWindow *window);
    void buildSerialControls(QToolBar *bar);
    void buildExport(QMainWindow *window);
    void buildIo(QMainWindow *window);
};
