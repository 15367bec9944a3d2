#pragma once

#include "DashboardItem.h"
#include "DashboardView.h"
#include "LayoutFormat.h"
#include "DashboardWidget.h"
#include "Dashboard.h"
#include "Ombrix.h"
#include "ScriptedPrompts.h"
#include "SignalRouter.h"
#include "TestFiles.h"

#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

// A main window on a fresh project in a temporary folder, with its dialogs
// answered by ScriptedPrompts.
struct WindowFixture
{
    static QByteArray definitions()
    {
        return QByteArrayLiteral("DASHBOARD_SIGNAL(RPM, \"Engine speed\", float)\n"
                                 "DASHBOARD_SIGNAL(TEMP, \"Temperature\", float)\n"
                                 "DASHBOARD_MAPPING(RPM, 10, 0.5)\n"
                                 "DASHBOARD_STATE_GROUP(MODE, \"Mode\")\n"
                                 "DASHBOARD_STATE(MODE, RUN, \"Running\")\n"
                                 "DASHBOARD_STATE(MODE, STOP, \"Stopped\")\n"
                                 "DASHBOARD_ERROR(E_HOT, 7, \"Overheated\")\n");
    }

    WindowFixture()
    {
        QStandardPaths::setTestModeEnabled(true);
        project = root.filePath(QStringLiteral("project"));
        writeFile(project + QStringLiteral("/dashboard_signals.def"), definitions());
        window = std::make_unique<Ombrix>();
        prompts = ScriptedPrompts::installOn(*window);
        window->setProjectDir(project);
        window->resize(1280, 800);
    }

    DashboardItem *add(const QString &type, const QStringList &signalNames = {})
    {
        DashboardItem *item = window->dashboard()->addWidget(type);
        if (item && !signalNames.isEmpty())
            item->dashboardWidget()->setSignalNames(signalNames);
        return item;
    }

    template<typename T>
    T *widgetOf(DashboardItem *item) const
    {
        return item ? qobject_cast<T *>(item->dashboardWidget()) : nullptr;
    }

    QTemporaryDir root;
    QString project;
    std::unique_ptr<Ombrix> window;
    ScriptedPrompts *prompts = nullptr;
};
