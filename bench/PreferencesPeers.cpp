// bench/PreferencesPeers.cpp
//
// Other stores doing the same work: SQLite, QSettings, and GSettings on dconf.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "bench/PreferencesBench.h"

#ifdef HAVE_SQLITE
#include <sqlite3.h>
#endif
#ifdef HAVE_GIO
#include <gio/gio.h>
#endif
#ifdef HAVE_QT
#define QT_NO_KEYWORDS // "signals" is a name in GIO
#include <QSettings>
#endif

namespace {

#ifdef HAVE_SQLITE

// Write-ahead log, full synchronisation: a commit is on disk when it returns.
class CDatabase {
public:
    CDatabase()
    {
        (void)sqlite3_open((BenchFolder() + "/peer.sqlite").c_str(), &m_database);
        (void)sqlite3_exec(m_database,
                           "PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL;"
                           "CREATE TABLE IF NOT EXISTS settings (key TEXT PRIMARY KEY, value TEXT);"
                           "INSERT OR REPLACE INTO settings VALUES ('Key 0', 'some value');",
                           nullptr, nullptr, nullptr);
        (void)sqlite3_prepare_v2(m_database, "SELECT value FROM settings WHERE key = ?", -1, &m_read, nullptr);
        (void)sqlite3_prepare_v2(m_database, "INSERT OR REPLACE INTO settings VALUES (?, ?)", -1, &m_write, nullptr);
    }
    ~CDatabase()
    {
        sqlite3_finalize(m_read);
        sqlite3_finalize(m_write);
        sqlite3_close(m_database);
    }
    CDatabase(const CDatabase&) = delete;
    CDatabase& operator=(const CDatabase&) = delete;

    bool Read(char* buffer, std::size_t size)
    {
        (void)sqlite3_bind_text(m_read, 1, "Key 0", -1, SQLITE_STATIC);
        const bool found = sqlite3_step(m_read) == SQLITE_ROW;
        if (found)
            std::snprintf(buffer, size, "%s", reinterpret_cast<const char*>(sqlite3_column_text(m_read, 0)));
        (void)sqlite3_reset(m_read);
        return found;
    }
    bool Write(const std::string& value)
    {
        (void)sqlite3_bind_text(m_write, 1, "Key 0", -1, SQLITE_STATIC);
        (void)sqlite3_bind_text(m_write, 2, value.c_str(), -1, SQLITE_TRANSIENT);
        const bool done = sqlite3_step(m_write) == SQLITE_DONE;
        (void)sqlite3_reset(m_write);
        return done;
    }

private:
    sqlite3* m_database = nullptr;
    sqlite3_stmt* m_read = nullptr;
    sqlite3_stmt* m_write = nullptr;
};

void ReadSqlite(benchmark::State& state)
{
    CDatabase database;
    char buffer[64];
    for (auto _ : state) {
        if (!database.Read(buffer, sizeof buffer))
            state.SkipWithError("not found");
    }
}

void WriteSqlite(benchmark::State& state)
{
    CDatabase database;
    int number = 0;
    for (auto _ : state) {
        if (!database.Write(std::to_string(++number)))
            state.SkipWithError("cannot write");
    }
}

#endif
#ifdef HAVE_QT

void ReadQt(benchmark::State& state)
{
    QSettings settings(QString::fromStdString(BenchFolder() + "/peer.ini"), QSettings::IniFormat);
    settings.setValue("key", "some value");
    settings.sync();
    char buffer[64];
    for (auto _ : state) {
        settings.sync();
        const QByteArray text = settings.value("key").toString().toUtf8();
        std::snprintf(buffer, sizeof buffer, "%s", text.constData());
        benchmark::DoNotOptimize(buffer);
    }
}

void WriteQt(benchmark::State& state)
{
    QSettings settings(QString::fromStdString(BenchFolder() + "/peer.ini"), QSettings::IniFormat);
    int number = 0;
    for (auto _ : state) {
        settings.setValue("key", ++number);
        settings.sync();
    }
}

#endif
#ifdef HAVE_GIO

GSettings* OpenGSettings()
{
    static GSettings* const settings = []() -> GSettings* {
        const std::string folder = BenchFolder() + "/schemas";
        std::filesystem::create_directories(folder);
        std::ofstream(folder + "/bench.gschema.xml")
            << "<schemalist><schema id='com.corvane.bench' path='/com/corvane/bench/'>"
               "<key name='key' type='s'><default>''</default></key></schema></schemalist>";
        if (std::system(("glib-compile-schemas " + folder).c_str()) != 0 || !std::getenv("DBUS_SESSION_BUS_ADDRESS"))
            return nullptr;
        GSettingsSchemaSource* const source =
            g_settings_schema_source_new_from_directory(folder.c_str(), nullptr, FALSE, nullptr);
        GSettingsSchema* const schema =
            source ? g_settings_schema_source_lookup(source, "com.corvane.bench", FALSE) : nullptr;
        return schema ? g_settings_new_full(schema, nullptr, nullptr) : nullptr;
    }();
    return settings;
}

void ReadGSettings(benchmark::State& state)
{
    GSettings* const settings = OpenGSettings();
    g_settings_set_string(settings, "key", "some value");
    g_settings_sync();
    char buffer[64];
    for (auto _ : state) {
        while (g_main_context_iteration(nullptr, FALSE)) { // foreign changes come as messages
        }
        gchar* const text = g_settings_get_string(settings, "key");
        std::snprintf(buffer, sizeof buffer, "%s", text);
        g_free(text);
    }
}

void WriteGSettings(benchmark::State& state)
{
    GSettings* const settings = OpenGSettings();
    int number = 0;
    for (auto _ : state) {
        g_settings_set_string(settings, "key", std::to_string(++number).c_str());
        g_settings_sync();
    }
}

#endif

} // namespace

void RegisterPeers()
{
#ifdef HAVE_SQLITE
    benchmark::RegisterBenchmark("read/SQLite", ReadSqlite);
    benchmark::RegisterBenchmark("write/SQLite", WriteSqlite);
#endif
#ifdef HAVE_QT
    benchmark::RegisterBenchmark("read/QSettings", ReadQt);
    benchmark::RegisterBenchmark("write/QSettings", WriteQt);
#endif
#ifdef HAVE_GIO
    if (OpenGSettings()) {
        benchmark::RegisterBenchmark("read/GSettings on dconf", ReadGSettings);
        benchmark::RegisterBenchmark("write/GSettings on dconf", WriteGSettings);
    } else {
        std::fprintf(stderr, "GSettings is left out: run this under dbus-run-session\n");
    }
#endif
}
