// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/core/enginemodules.h"

#include "app/sclogger.h"
#include "engine/capture/captureplatform.h"

#include <QCoreApplication>
#include <QDebug>
#include <QStringList>

#include <obs.h>

namespace {

struct FolderSearch
{
    QByteArray folder;
    QStringList failed;
};

void openModule(FolderSearch& search, const obs_module_info2& found)
{
    obs_module_t* module = nullptr;
    const int code = obs_open_module(&module, found.bin_path, found.data_path);
    if (code != MODULE_SUCCESS || !obs_init_module(module))
        search.failed << QString::fromUtf8(found.name);
}

void openIfOwn(void* param, const obs_module_info2* found)
{
    auto& search = *static_cast<FolderSearch*>(param);
    if (QByteArray(found->bin_path).startsWith(search.folder))
        openModule(search, *found);
}

QStringList loadFrom(const QString& folder)
{
    FolderSearch search{folder.toUtf8() + '/', {}};
    obs_find_modules2(openIfOwn, &search);
    obs_post_load_modules();
    return search.failed;
}

QStringList loadAll()
{
    obs_module_failure_info failures{};
    obs_load_all_modules2(&failures);
    QStringList failed;
    for (size_t i = 0; i < failures.count; ++i)
        failed << QString::fromUtf8(failures.failed_modules[i]);
    obs_module_failure_info_free(&failures);
    return failed;
}

bool isRegistered(const NeededType& type)
{
    switch (type.registry) {
    case NeededType::Registry::Source:
        return obs_source_get_display_name(type.id) != nullptr;
    case NeededType::Registry::Output:
        return obs_output_get_display_name(type.id) != nullptr;
    case NeededType::Registry::Encoder:
        return obs_encoder_get_display_name(type.id) != nullptr;
    }
    return false;
}

QStringList failedModules(const CapturePlatform& platform)
{
    QStringList failed =
        platform.moduleLoading == ModuleLoading::All ? loadAll() : loadFrom(EngineFolders::besideExecutable().plugins);
    for (const char* name : platform.neededModules) {
        if (!obs_get_module(name) && !failed.contains(QLatin1String(name)))
            failed << QLatin1String(name);
    }
    return failed;
}

} // namespace

EngineFolders EngineFolders::besideExecutable()
{
    const QString root = QCoreApplication::applicationDirPath() + QLatin1String("/obs-data");
    return {root + QLatin1String("/obs-plugins/64bit"), root + QLatin1String("/data/obs-plugins/%module%"),
            root + QLatin1String("/data/libobs/")};
}

void loadEngineModules(const CapturePlatform& platform)
{
    const QStringList failed = failedModules(platform);
    if (failed.isEmpty())
        qInfo() << "All OBS modules loaded successfully";
    else
        qCritical() << "Failed to load" << failed.size() << "OBS modules:";
    for (const QString& name : failed) {
        qCritical().noquote() << "  - Failed module:" << name;
        SCLogger::error(QStringLiteral("Failed to load OBS module: %1").arg(name));
    }
    for (const NeededType& type : platform.neededTypes) {
        if (!isRegistered(type))
            SCLogger::error(QStringLiteral("The engine has no \"%1\": %2")
                                .arg(QLatin1String(type.id), QLatin1String(type.consequence)));
    }
}
