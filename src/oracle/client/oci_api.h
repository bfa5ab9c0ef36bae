// The part of the Oracle Call Interface this system uses: Oracle's C types, the constants we
// pass or test for, and the sixteen entry points, written from Oracle's published OCI reference.
// The library binds the entry points at run time through a table of the *_fn pointer types;
// the simulated client (ocisim) defines the plain declarations with C linkage. Any thread.
#pragma once
#include <cstddef>
#include <cstdint>

extern "C" {

// Oracle's scalar types, with the widths OCI gives them on every 64-bit platform.
using sword = std::int32_t;
using sb4 = std::int32_t;
using ub4 = std::uint32_t;
using sb2 = std::int16_t;
using ub2 = std::uint16_t;
using sb1 = std::int8_t;
using ub1 = std::uint8_t;
using OraText = unsigned char;

// Opaque handles: only pointers to them ever cross the interface.
struct OCIEnv;
struct OCIError;
struct OCISvcCtx;
struct OCIServer;
struct OCISession;
struct OCIStmt;
struct OCIDefine;
struct OCIBind;
struct OCIAdmin;
struct OCISnapshot;

}  // extern "C"

// Return codes.
constexpr sword OCI_SUCCESS = 0;
constexpr sword OCI_SUCCESS_WITH_INFO = 1;
constexpr sword OCI_NEED_DATA = 99;
constexpr sword OCI_NO_DATA = 100;
constexpr sword OCI_ERROR = -1;
constexpr sword OCI_INVALID_HANDLE = -2;
constexpr sword OCI_STILL_EXECUTING = -3123;

// Handle types.
constexpr ub4 OCI_HTYPE_ENV = 1;
constexpr ub4 OCI_HTYPE_ERROR = 2;
constexpr ub4 OCI_HTYPE_SVCCTX = 3;
constexpr ub4 OCI_HTYPE_STMT = 4;
constexpr ub4 OCI_HTYPE_BIND = 5;
constexpr ub4 OCI_HTYPE_DEFINE = 6;
constexpr ub4 OCI_HTYPE_SERVER = 8;
constexpr ub4 OCI_HTYPE_SESSION = 9;
constexpr ub4 OCI_HTYPE_ADMIN = 28;

// Attributes.
constexpr ub4 OCI_ATTR_SERVER = 6;
constexpr ub4 OCI_ATTR_SESSION = 7;
constexpr ub4 OCI_ATTR_USERNAME = 22;
constexpr ub4 OCI_ATTR_PASSWORD = 23;

// Modes of environment creation, logon and statements.
constexpr ub4 OCI_DEFAULT = 0;
constexpr ub4 OCI_THREADED = 1;
constexpr ub4 OCI_SYSDBA = 2;
constexpr ub4 OCI_SYSOPER = 4;
constexpr ub4 OCI_PRELIM_AUTH = 8;

// Credentials of OCISessionBegin.
constexpr ub4 OCI_CRED_RDBMS = 1;
constexpr ub4 OCI_CRED_EXT = 2;

// Statement language and fetch orientation.
constexpr ub4 OCI_NTV_SYNTAX = 1;
constexpr ub2 OCI_FETCH_NEXT = 2;

// Shut-down modes and start-up flags.
constexpr ub4 OCI_DBSHUTDOWN_TRANSACTIONAL = 1;
constexpr ub4 OCI_DBSHUTDOWN_TRANSACTIONAL_LOCAL = 2;
constexpr ub4 OCI_DBSHUTDOWN_IMMEDIATE = 3;
constexpr ub4 OCI_DBSHUTDOWN_ABORT = 4;
constexpr ub4 OCI_DBSHUTDOWN_FINAL = 5;
constexpr ub4 OCI_DBSTARTUPFLAG_FORCE = 1;
constexpr ub4 OCI_DBSTARTUPFLAG_RESTRICT = 2;

// External data types.
constexpr ub2 SQLT_CHR = 1;
constexpr ub2 SQLT_INT = 3;
constexpr ub2 SQLT_STR = 5;

// The entry points as Oracle declares them; the simulated client defines them. The library
// never calls these names directly: a direct call would tie it to the client at load time.
extern "C" {
sword OCIEnvCreate(OCIEnv** envp, ub4 mode, void* ctxp,
                   void* (*malocfp)(void* ctxp, std::size_t size),
                   void* (*ralocfp)(void* ctxp, void* memptr, std::size_t newsize),
                   void (*mfreefp)(void* ctxp, void* memptr), std::size_t xtramem_sz,
                   void** usrmempp);
sword OCIErrorGet(void* hndlp, ub4 recordno, OraText* sqlstate, sb4* errcodep, OraText* bufp,
                  ub4 bufsiz, ub4 type);
sword OCIHandleAlloc(const void* parenth, void** hndlpp, const ub4 type,
                     const std::size_t xtramem_sz, void** usrmempp);
sword OCIHandleFree(void* hndlp, const ub4 type);
sword OCIAttrSet(void* trgthndlp, ub4 trghndltyp, void* attributep, ub4 size, ub4 attrtype,
                 OCIError* errhp);
sword OCIServerAttach(OCIServer* srvhp, OCIError* errhp, const OraText* dblink, sb4 dblink_len,
                      ub4 mode);
sword OCIServerDetach(OCIServer* srvhp, OCIError* errhp, ub4 mode);
sword OCISessionBegin(OCISvcCtx* svchp, OCIError* errhp, OCISession* usrhp, ub4 credt, ub4 mode);
sword OCISessionEnd(OCISvcCtx* svchp, OCIError* errhp, OCISession* usrhp, ub4 mode);
sword OCIStmtPrepare(OCIStmt* stmtp, OCIError* errhp, const OraText* stmt, ub4 stmt_len,
                     ub4 language, ub4 mode);
sword OCIDefineByPos(OCIStmt* stmtp, OCIDefine** defnp, OCIError* errhp, ub4 position,
                     void* valuep, sb4 value_sz, ub2 dty, void* indp, ub2* rlenp, ub2* rcodep,
                     ub4 mode);
sword OCIBindByName(OCIStmt* stmtp, OCIBind** bindp, OCIError* errhp, const OraText* placeholder,
                    sb4 placeh_len, void* valuep, sb4 value_sz, ub2 dty, void* indp, ub2* alenp,
                    ub2* rcodep, ub4 maxarr_len, ub4* curelep, ub4 mode);
sword OCIStmtExecute(OCISvcCtx* svchp, OCIStmt* stmtp, OCIError* errhp, ub4 iters, ub4 rowoff,
                     const OCISnapshot* snap_in, OCISnapshot* snap_out, ub4 mode);
sword OCIStmtFetch2(OCIStmt* stmtp, OCIError* errhp, ub4 nrows, ub2 orientation,
                    sb4 scrollOffset, ub4 mode);
sword OCIDBStartup(OCISvcCtx* svchp, OCIError* errhp, OCIAdmin* admhp, ub4 mode, ub4 flags);
sword OCIDBShutdown(OCISvcCtx* svchp, OCIError* errhp, OCIAdmin* admhp, ub4 mode);
}  // extern "C"

// The same as function-pointer types, in the order of the binding table.
using OCIEnvCreate_fn = decltype(&OCIEnvCreate);
using OCIErrorGet_fn = decltype(&OCIErrorGet);
using OCIHandleAlloc_fn = decltype(&OCIHandleAlloc);
using OCIHandleFree_fn = decltype(&OCIHandleFree);
using OCIAttrSet_fn = decltype(&OCIAttrSet);
using OCIServerAttach_fn = decltype(&OCIServerAttach);
using OCIServerDetach_fn = decltype(&OCIServerDetach);
using OCISessionBegin_fn = decltype(&OCISessionBegin);
using OCISessionEnd_fn = decltype(&OCISessionEnd);
using OCIStmtPrepare_fn = decltype(&OCIStmtPrepare);
using OCIDefineByPos_fn = decltype(&OCIDefineByPos);
using OCIBindByName_fn = decltype(&OCIBindByName);
using OCIStmtExecute_fn = decltype(&OCIStmtExecute);
using OCIStmtFetch2_fn = decltype(&OCIStmtFetch2);
using OCIDBStartup_fn = decltype(&OCIDBStartup);
using OCIDBShutdown_fn = decltype(&OCIDBShutdown);
