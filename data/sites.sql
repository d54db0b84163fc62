-- The data database: TrelvinData.mdb, and the template ForBackups.mdb of which every job run gets a copy.
-- Texts compare without regard to case, as the statements of the program expect.

-- One row for each stored site. An ID is never given twice, because rows of Data refer to it for ever. The newest
-- row is the last one of SELECT * FROM Sites; an index that holds all columns would break that.
CREATE TABLE Sites (
  ID INTEGER PRIMARY KEY AUTOINCREMENT,
  SiteName TEXT COLLATE NOCASE,
  Type VARCHAR(50) COLLATE NOCASE,
  DateTime TIMESTAMP DEFAULT (datetime('now', 'localtime'))
);

-- One row for each stored value.
CREATE TABLE Data (
  ID INTEGER PRIMARY KEY AUTOINCREMENT,
  SiteNumber INTEGER,
  Location TEXT COLLATE NOCASE,
  Name VARCHAR(255) COLLATE NOCASE,
  Class VARCHAR(255) COLLATE NOCASE,
  DataType INTEGER,
  LocalPath TEXT COLLATE NOCASE,
  AppPath TEXT COLLATE NOCASE,
  -- A number and no truth value: between servers from IIS 5 on it holds the isolation, which has three values;
  -- with IIS 4 on a side it holds True or False, stored as 1 or 0, or as -1 or 0 by Access.
  AppInOutProc INTEGER,
  AppPoolName TEXT COLLATE NOCASE,
  NumberValue INTEGER,
  StringValue TEXT COLLATE NOCASE,
  BooleanValue INTEGER,
  ObjectValue TEXT COLLATE NOCASE
);
-- Every reader asks for one site. New rows go to the index's end, so that it costs storing next to nothing.
CREATE INDEX DataOfSite ON Data (SiteNumber);
