-- The settings database, Trelvin.mdb.
-- Texts compare without regard to case, as the statements of the program expect.

-- Names of metabase properties that no transfer takes along; read once at start, in this order.
CREATE TABLE ExcludedExportParameters (
  PName VARCHAR(255) COLLATE NOCASE
);

-- What is to become of the sites selected at the moment. A row is a directory (Folder), a binding (OldIP) or a
-- secure binding (OldSSLIP); the columns of the other two kinds are Null.
CREATE TABLE tmpSettings (
  SiteID INTEGER,
  ListIndex INTEGER,
  Folder TEXT COLLATE NOCASE,
  Directory TEXT COLLATE NOCASE,
  OldIP TEXT COLLATE NOCASE,
  NewIP TEXT COLLATE NOCASE,
  OldSSLIP TEXT COLLATE NOCASE,
  NewSSLIP TEXT COLLATE NOCASE
);
CREATE INDEX tmpSettingsOfSite ON tmpSettings (SiteID, ListIndex);

-- The directories of these sites whose content is to be copied.
CREATE TABLE tmpFilesToCopy (
  ListNum INTEGER,
  DirNum INTEGER,
  FileName TEXT COLLATE NOCASE,
  Copy BOOLEAN
);
CREATE INDEX tmpFilesToCopyOfSite ON tmpFilesToCopy (ListNum, DirNum);
