#pragma once

/// The codes of a print job. All are 32-bit. They are part of the interface to the host and are
/// stored in job files, so they keep their values and their gaps.

/// Where a report comes from.
enum JT_ORIGINATOR : int {
  JTO_RIP = 0,     ///< the RIP child process
  JTO_ODALIS = 1,  ///< the output engine child process
  JTO_SYSTEM = 2,  ///< the printing thread itself
};

/// The state of a job (the ticket's m_Status).
enum JT_STATUS : int {
  JS_RECEIVING = 0,
  JS_PREPROCESSING = 1,
  JS_IDLE = 2,     ///< may be printed
  JS_HOLDING = 3,  ///< held by the host, failed, or aborted: see m_Error
  JS_ACTIVE = 4,   ///< printing, or printed well and not yet reset by the host
  JS_COMPLETE = 5,
};

/// The error of a job (the ticket's m_Error). Codes of 255 and above come from a child, or are
/// about one, and are not written to the job log.
enum JT_ERROR : int {
  JTE_NONE = 0,
  JTE_RIP_MISSING = 1,         ///< no RIP executable
  JTE_ODALIS_MISSING = 2,      ///< no output engine executable
  JTE_STEM_MISSING = 3,        ///< reserved
  JTE_NO_OUTPUT_THREAD = 4,    ///< reserved
  JTE_START_ODALIS = 5,        ///< the output engine could not be started
  JTE_START_RIP = 6,           ///< the RIP could not be started
  JTE_RIP_EXIT = 8,            ///< RIP exit status above 3, or negative
  JTE_ODALIS_EXIT = 9,         ///< output engine exit status above 2, or negative
  JTE_LOW_RESOURCES = 10,      ///< pipes or reader threads could not be made
  JTE_NUMBERED = 11,           ///< reserved
  JTE_ABNORMAL = 12,           ///< the job was aborted
  JTE_SPOOL_OUTPUT = 13,       ///< the pages could not be moved to the spool
  JTE_SPOOL_GENERATE = 14,     ///< the text for the output engine could not be made
  JTE_PREFIX = 15,             ///< the prefix file could not be made
  JTE_SPOOL_INVALID = 16,      ///< the RIP's page list did not parse or is empty
  JTE_SPOOL_MISSING = 17,      ///< there are no pages
  JTE_PS_MISSING = 18,         ///< the job file is absent or unreadable
  JTE_UNDEFINED = 255,         ///< a child said ERROR
  JTE_RUN_INSTALL = 256,       ///< a child said RUN_INSTALL
  JTE_INVALID_RECOVERY = 257,  ///< a child said INVALID_RECOVERY
  JTE_RIP_STATUS_1 = 258,      ///< RIP exit status 1
  JTE_RIP_STATUS_2 = 259,      ///< RIP exit status 2
  JTE_RIP_STATUS_3 = 260,      ///< RIP exit status 3
  JTE_ODALIS_STATUS_1 = 261,   ///< output engine exit status 1
  JTE_ODALIS_STATUS_2 = 262,   ///< output engine exit status 2
};

/// A step of a job, or a state of a child.
enum JT_INFO : int {
  JTI_BAD = 0,
  JTI_START_RIPPING = 1,
  JTI_RIPPING_COMPLETE = 2,
  JTI_START_PRINTING = 3,
  JTI_PRINTING_COMPLETE = 4,
  JTI_START_SPOOLING = 5,
  JTI_SPOOLING_COMPLETE = 6,
  JTI_PROCESSING_STARTED = 7,
  JTI_PROCESSING_COMPLETED = 8,
  JTI_PRINTING_ABORTED = 9,
  JTI_CLQ_SUCCESS = 10,
  JTI_CLQ_FAILURE = 11,
  JTI_UNDEFINED = 255,
  // States of the child processes; their texts depend on the originator.
  JTI_INITIALISING = 256,
  JTI_READY = 257,
  JTI_INTERPRETING = 258,
  JTI_CONVERTING = 259,
  JTI_FLUSHING = 260,
  JTI_PRINTING = 261,
  JTI_SPOOLING = 262,
  JTI_VALID_RECOVERY = 263,
};

/// The first code of a child's own. Such codes are not written to the job log.
inline constexpr int JT_FIRST_CHILD_CODE = 255;
