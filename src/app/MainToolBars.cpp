#include "MainToolBars.h"

#include "FileButton.h"
#include "PlaybackScrubber.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QMainWindow>
#include <QSlider>
#include <QToolBar>
#include <QToolButton>

namespace {

QIcon icon(const char *name)
{
    return QIcon(QStringLiteral(":/icons/") + QLatin1String(name) + QStringLiteral(".png"));
}

} // namespace

MainToolBars::MainToolBars(QMainWindow *window)
    : QObject(window)
{
    buildControls(window);
    buildExport(window);
    buildIo(window);
    setPlaying(false);
}

QToolBar *MainToolBars::addBar(QMainWindow *window, const QString &title, const QString &objectName)
{
    auto *bar = window->addToolBar(title);
    bar->setObjectName(objectName);
    bar->setMovable(false);
    bar->setFloatable(false);
    bar->setAutoFillBackground(true);
    QPalette palette = bar->palette();
    palette.setColor(QPalette::Window, QColor(QStringLiteral("#eeeeee")));
    bar->setPalette(palette);
    bar->setStyleSheet(QStringLiteral("QToolBar { spacing: 6px; }QToolButton { padding: 2px 4px; margin: 0px; }"));
    bar->setIconSize(QSize(24, 24));
    return bar;
}

void MainToolBars::addSpacer(QToolBar *bar)
{
    auto *spacer = new QWidget(bar);
    spacer->setFixedWidth(10);
    bar->addWidget(spacer);
}

void MainToolBars::buildControls(QMainWindow *window)
{
    controlsBar = addBar(window, tr("Controls"), QStringLiteral("tb_controls"));
    designAction = controlsBar->addAction(icon("design"), tr("Design"));
    saveLayoutAction = controlsBar->addAction(icon("save"), tr("Save Layout"));
    loadLayoutAction = controlsBar->addAction(icon("load"), tr("Load Layout"));
    addSpacer(controlsBar);
    controlsBar->addSeparator();
    buildSerialControls(controlsBar);
    controlsBar->addSeparator();
    addSpacer(controlsBar);
    recordAction = controlsBar->addAction(icon("record"), tr("Record"));
    stopAction = controlsBar->addAction(icon("stop"), tr("Stop"));
    playAction = controlsBar->addAction(icon("play"), tr("Play"));
    addSpacer(controlsBar);

    controlsBar->addWidget(new QLabel(tr("Speed:"), controlsBar));
    speedBox = new QDoubleSpinBox(controlsBar);
    speedBox->setRange(0.01, 100.0);
    speedBox->setSingleStep(0.1);
    speedBox->setDecimals(2);
    speedBox->setValue(1.0);
    controlsBar->addWidget(speedBox);
}

void MainToolBars::buildSerialControls(QToolBar *bar)
{
    bar->addWidget(new QLabel(tr(" Port: "), bar));
    portBox = new QComboBox(bar);
    portBox->setObjectName(QStringLiteral("portBox"));
    portBox->setMinimumWidth(140);
    // Editable so that any device path (a pseudo-terminal, a symlink) or network source can be typed.
    portBox->setEditable(true);
    portBox->setInsertPolicy(QComboBox::NoInsert);
    portBox->setToolTip(tr("A serial port from the list, or type a device path, tcp://HOST:PORT, "
                           "udp://[HOST]:PORT or sim: (the simulated device of the project)"));
    bar->addWidget(portBox);

    bar->addWidget(new QLabel(tr(" Baud: "), bar));
    baudBox = new QComboBox(bar);
    baudBox->setObjectName(QStringLiteral("baudBox"));
    for (int rate : {115200, 57600, 38400, 19200, 9600})
        baudBox->addItem(QString::number(rate), rate);
    baudBox->setCurrentText(QStringLiteral("115200"));
    bar->addWidget(baudBox);
    addSpacer(bar);

    connectButton = new QToolButton(bar);
    connectButton->setObjectName(QStringLiteral("connectButton"));
    connectButton->setText(tr("Connect"));
    connectButton->setIcon(icon("connect"));
    connectButton->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    connectButton->setAutoRaise(true);
    connectButton->setFocusPolicy(Qt::NoFocus);
    connectButton->setIconSize(bar->iconSize());
    bar->addWidget(connectButton);

    reconnectBox = new QCheckBox(tr("Reconnect"), bar);
    reconnectBox->setObjectName(QStringLiteral("reconnectBox"));
    reconnectBox->setToolTip(tr("If checked, a lost port is opened again at the same baud rate as soon as its device "
                                "is back (looked for every half second); a network source is tried again after "
                                "half a second, then less and less often, up to every 10 seconds. A recording that "
                                "the loss ended is not restarted."));
    bar->addWidget(reconnectBox);
    addSpacer(bar);
}

void MainToolBars::buildExport(QMainWindow *window)
{
    exportBar = addBar(window, tr("Export"), QStringLiteral("tb_export"));
    // Both actions share one icon; the text tells them apart.
    exportBar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    exportSignalsAction = exportBar->addAction(icon("export"), tr("Signals"));
    exportEventsAction = exportBar->addAction(icon("export"), tr("Events"));
}

void MainToolBars::buildIo(QMainWindow *window)
{
    // Its own row, so the slider keeps its width next to the other bars.
    window->addToolBarBreak();
    ioBar = addBar(window, tr("I/O"), QStringLiteral("tb_io"));
    useRecordingDefinitionsBox = new QCheckBox(tr("Use recording’s definitions"), ioBar);
    useRecordingDefinitionsBox->setToolTip(
        tr("If checked, playback uses the signal definitions saved with the recording (if available)."));
    ioBar->addWidget(useRecordingDefinitionsBox);
    addSpacer(ioBar);

    playbackFileButton = new FileButton(tr("No file selected"), ioBar);
    playbackFileButton->setObjectName(QStringLiteral("playbackFileButton"));
    playbackFileLabel = playbackFileButton->label();
    playbackFileLabel->setObjectName(QStringLiteral("playbackFileLabel"));
    ioBar->addWidget(playbackFileButton);
    addSpacer(ioBar);

    positionSlider = new QSlider(Qt::Horizontal, ioBar);
    positionSlider->setObjectName(QStringLiteral("positionSlider"));
    positionSlider->setRange(0, PlaybackScrubber::SliderMaxSteps);
    positionSlider->setMinimumWidth(300);
    positionSlider->setMaximumWidth(500);
    ioBar->addWidget(positionSlider);

    timeLabel = new QLabel(QStringLiteral("0.0"), ioBar);
    timeLabel->setObjectName(QStringLiteral("timeLabel"));
    ioBar->addWidget(timeLabel);
}

void MainToolBars::setPorts(const QStringList &ports)
{
    const QString typed = portBox->currentText();
    portBox->clear();
    portBox->addItems(ports);
    if (!typed.isEmpty())
        portBox->setCurrentText(typed);
}

QString MainToolBars::portName() const
{
    return portBox->currentText().trimmed();
}

void MainToolBars::setPortName(const QString &name)
{
    portBox->setCurrentText(name);
}

int MainToolBars::baudRate() const
{
    return baudBox->currentData().toInt();
}

void MainToolBars::setBaudRate(int rate)
{
    int index = baudBox->findData(rate);
    if (index < 0) {
        baudBox->addItem(QString::number(rate), rate);
        index = baudBox->count() - 1;
    }
    baudBox->setCurrentIndex(index);
}

void MainToolBars::setConnected(bool connected)
{
    connectButton->setText(connected ? tr("Disconnect") : tr("Connect"));
    Q_EMIT connectedChanged(connected);
}

void MainToolBars::scaleSpeed(double factor)
{
    speedBox->setValue(qBound(speedBox->minimum(), speedBox->value() * factor, speedBox->maximum()));
}

void MainToolBars::setPlaying(bool playing)
{
    stopAction->setIcon(playing ? icon("pause") : icon("stop"));
    stopAction->setText(playing ? tr("Pause") : tr("Stop"));
    stopAction->setToolTip(playing ? tr("Pause playback") : tr("Stop"));
    playAction->setEnabled(!playing);
}
