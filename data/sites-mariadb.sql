-- The data database on a MariaDB server, from 10.10 on. To be run once, in an empty database, by its administrator:
--   mariadb --default-character-set=utf8mb4 trelvin < sites-mariadb.sql
-- The program needs no more than SELECT and INSERT.
--
-- The collation compares texts without regard to case, but tells accents and trailing blanks apart: two nodes of a site
-- that compare as equal would be mixed up when the site is read. It puts a node before those below it, as the program's
-- own file does; nodes side by side may come in another order, which no reader minds.

-- One row for each stored site. An ID is never given twice, because rows of Data refer to it for ever.
CREATE TABLE StoredSites (
  ID INTEGER NOT NULL AUTO_INCREMENT PRIMARY KEY,
  SiteName LONGTEXT,
  Type VARCHAR(50),
  DateTime DATETIME DEFAULT CURRENT_TIMESTAMP
) ENGINE = InnoDB CHARACTER SET utf8mb4 COLLATE utf8mb4_uca1400_nopad_as_ci;

-- One row for each stored value.
CREATE TABLE StoredData (
  ID BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  SiteNumber INTEGER,
  -- The columns that rows are ordered by have a length, since the server tells accents apart only in texts whose sort
  -- key it keeps whole.
  Location VARCHAR(1500),
  Name VARCHAR(255),
  Class VARCHAR(255),
  DataType INTEGER,
  LocalPath VARCHAR(500),
  AppPath LONGTEXT,
  -- A number and no truth value: between servers from IIS 5 on it holds the isolation, which has three values.
  AppInOutProc INTEGER,
  AppPoolName LONGTEXT,
  NumberValue BIGINT,
  StringValue LONGTEXT,
  BooleanValue INTEGER,
  ObjectValue LONGTEXT,
  KEY DataOfSite (SiteNumber)
) ENGINE = InnoDB CHARACTER SET utf8mb4 COLLATE utf8mb4_uca1400_nopad_as_ci;

-- The names that the program uses, each in both its spellings: on most servers the case of a table's name counts. Where
-- it doesn't, the second spelling replaces the first by its like. Rows that no statement orders come in the order of
-- storing; the newest site is the last one.
CREATE OR REPLACE VIEW Sites AS SELECT * FROM StoredSites ORDER BY ID;
CREATE OR REPLACE VIEW SITES AS SELECT * FROM StoredSites ORDER BY ID;
CREATE OR REPLACE VIEW Data AS SELECT * FROM StoredData ORDER BY ID;
CREATE OR REPLACE VIEW DATA AS SELECT * FROM StoredData ORDER BY ID;
