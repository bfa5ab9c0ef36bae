/*
 * DbShadowLink: Oracle database protection for snapshot backups.
 *
 * A backup agent loads the library, calls OracleVssInitLib once with a log name, then any of
 * the operations below in the order its job needs, and OracleVssStopLib before it unloads the
 * library. Every text is UTF-16 and NUL-terminated; most results are XML documents.
 *
 * Results: every function but OracleLibStrFree returns 0 on success and 0x80004005 on any
 * failure. On success the out text (if any) receives a new buffer; on failure only the last
 * argument, the error text, receives one. Release both with OracleLibStrFree. An out argument
 * that is not written keeps its old value: read the error text only after a failure.
 *
 * Database logins: `user` and `password` name the database account; an empty user means the
 * operating-system account of the process (OS authentication).
 *
 * Threads: call from one thread at a time. The library starts no thread that outlives a call.
 */
#ifndef DBSHADOWLINK_H
#define DBSHADOWLINK_H

#include <stdint.h>

#ifdef _WIN32
#include <wchar.h>
typedef wchar_t DSL_WCHAR; /* UTF-16 code unit */
#define DSL_CALL __cdecl
#ifdef DBSHADOWLINK_BUILDING
#define DSL_API __declspec(dllexport)
#else
#define DSL_API __declspec(dllimport)
#endif
#else
#ifdef __cplusplus
typedef char16_t DSL_WCHAR; /* UTF-16 code unit */
#else
#include <uchar.h>
typedef char16_t DSL_WCHAR;
#endif
#define DSL_CALL
#define DSL_API __attribute__((visibility("default")))
#endif

/* 0 on success, DSL_E_FAIL (0x80004005) on any failure. */
typedef uint32_t DSL_RESULT;
#define DSL_S_OK ((DSL_RESULT)0)
#define DSL_E_FAIL ((DSL_RESULT)0x80004005u)

#ifdef __cplusplus
extern "C" {
#endif

/* Life of the library. */

/* Starts the library's log under `logName` and reads the configuration. A second call does
 * nothing and returns 0; the first call's log stays. */
DSL_API DSL_RESULT DSL_CALL OracleVssInitLib(const DSL_WCHAR* logName, DSL_WCHAR** error);
/* Drops the gathered VSS information. The log and configuration stay; a later
 * OracleVssInitLib in the same process does nothing. */
DSL_API DSL_RESULT DSL_CALL OracleVssStopLib(DSL_WCHAR** error);
/* Releases a text returned by any function of the library. Null is allowed. */
DSL_API void DSL_CALL OracleLibStrFree(void* text);
/* A check for a person at a console: init, walk every instance and print what it finds,
 * stop. The first two arguments are ignored. */
DSL_API DSL_RESULT DSL_CALL OracleTest(void* reserved1, void* reserved2, const DSL_WCHAR* logName,
                                       DSL_WCHAR** error);

/* Oracle's own VSS writer. */

/* The OracleEntries document: one OracleEntry per database instance of the machine (ASM
 * instances are left out), in discovery order. Each has "sid" and then either "db_name",
 * "instance_open", "db_open_readonly", "db_archive_logs_on" and "db_active" ("true"/"false"),
 * or, when the instance's state could not be read, "error" alone. The first call reads the
 * machine over one session per instance with operating-system authentication and keeps the
 * list; later calls return the same list without touching Oracle, until OracleVssStopLib drops
 * it and the next call reads the machine anew. A machine without databases gives
 * "<OracleEntries />". Schema: docs/schemas/oracle-entries.xsd. The first two arguments are
 * ignored. */
DSL_API DSL_RESULT DSL_CALL OracleGatherVssInfo(void* reserved1, void* reserved2, DSL_WCHAR** xml,
                                                DSL_WCHAR** error);
/* `skip` is 1 when the snapshot must leave out the Oracle writer of `sid`, else 0. */
DSL_API DSL_RESULT DSL_CALL OracleShouldSkipVssWriter(const DSL_WCHAR* sid, uint8_t* skip,
                                                      DSL_WCHAR** error);
/* `ok` is 1 when Oracle's VSS writer may take part in snapshots on this machine. */
DSL_API DSL_RESULT DSL_CALL OracleCheckVssFunctionality(uint8_t* ok, DSL_WCHAR** error);

/* Discovery. */

/* The explored document: every home, ASM instance and database. With `collect` non-zero,
 * archived logs and parameter files are gathered too. `configXml` names what the agent
 * remembers of earlier backups. */
DSL_API DSL_RESULT DSL_CALL OracleExploreInstances(uint8_t collect, const DSL_WCHAR* user,
                                                   const DSL_WCHAR* password,
                                                   const DSL_WCHAR* configXml, DSL_WCHAR** xml,
                                                   DSL_WCHAR** error);

/* Snapshot backup. */

/* Makes each database ready for a snapshot and returns the preparation document, which is
 * also saved as the meta file that lands in the snapshot. */
DSL_API DSL_RESULT DSL_CALL OraclePrepareDbsForBackup(const DSL_WCHAR* configXml,
                                                      const DSL_WCHAR* user,
                                                      const DSL_WCHAR* password,
                                                      const DSL_WCHAR* osUser,
                                                      const DSL_WCHAR* osPassword,
                                                      DSL_WCHAR** xml, DSL_WCHAR** error);
/* Undoes what the preparation did, given its document, and removes the meta file. */
DSL_API DSL_RESULT DSL_CALL OracleFinishDbsBackup(const DSL_WCHAR* dbPrepareXml,
                                                  const DSL_WCHAR* user,
                                                  const DSL_WCHAR* password, DSL_WCHAR** error);

/* Archived redo logs. */

/* Copies the archived logs newer than `lastRecId` into the logs folder and describes them. */
DSL_API DSL_RESULT DSL_CALL OracleBackupLogs(const DSL_WCHAR* home, const DSL_WCHAR* sid,
                                             const DSL_WCHAR* usn, const DSL_WCHAR* lastRecId,
                                             const DSL_WCHAR* user, const DSL_WCHAR* password,
                                             DSL_WCHAR** xml, DSL_WCHAR** error);
/* The archived_logs list of every log copy waiting in the logs folder. */
DSL_API DSL_RESULT DSL_CALL OracleEnumLogs(DSL_WCHAR** xml, DSL_WCHAR** error);
/* Removes the log copies named by an archived_logs list (or a part of one). */
DSL_API DSL_RESULT DSL_CALL OracleRemoveLogsInTemp(const DSL_WCHAR* logsXml, DSL_WCHAR** error);
/* The folder that holds the log copies. */
DSL_API DSL_RESULT DSL_CALL OracleGetLogsFolder(DSL_WCHAR** folder, DSL_WCHAR** error);
/* Has Oracle delete the archived logs that ended more than `minutes` ago. */
DSL_API DSL_RESULT DSL_CALL OracleDeleteLogsByTime(const DSL_WCHAR* home, const DSL_WCHAR* sid,
                                                   int32_t minutes, const DSL_WCHAR* user,
                                                   const DSL_WCHAR* password, DSL_WCHAR** error);
/* Has Oracle delete the oldest archived logs until they hold at most `size` bytes. */
DSL_API DSL_RESULT DSL_CALL OracleDeleteLogsBySize(const DSL_WCHAR* home, const DSL_WCHAR* sid,
                                                   uint64_t size, const DSL_WCHAR* user,
                                                   const DSL_WCHAR* password, DSL_WCHAR** error);

/* Restore from an image. */

/* `required` is 1 when this machine was restored from a snapshot taken by a backup. */
DSL_API DSL_RESULT DSL_CALL OracleIsRestoreRequired(uint8_t* required, DSL_WCHAR** error);
/* Brings the databases of the snapshot back into service. */
DSL_API DSL_RESULT DSL_CALL OracleDoRestore(DSL_WCHAR** error);

#ifdef __cplusplus
}
#endif

#endif /* DBSHADOWLINK_H */
