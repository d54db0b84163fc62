-- Properties that do not travel with a site, each with its reason. The rows go into ExcludedExportParameters.
-- Whoever needs another set edits that table; the program only reads it.

INSERT INTO ExcludedExportParameters (PName) VALUES
-- Set by the transfer itself. The value of the source would undo what it set.
  ('KeyType'),         -- a node's class is given when it is created; on a wrong node it would ruin that node
  ('Path'),            -- the physical directory, by the mapping of directories
  ('AppRoot'),         -- holds the source's own path and site number; comes with creating the application
  ('AppIsolated'),     -- comes with creating the application
  ('AppPackageID'),    -- names the source's package of components; a new one comes with the application
  ('AppPackageName'),  -- the same package's name
  ('AppWamClsid'),     -- the same package's class, registered on the source only

-- State at the moment of reading, not a setting.
  ('ServerState'),     -- whether the site runs
  ('ServerCommand'),   -- writing it starts or stops the site
  ('Win32Error'),      -- outcome of the latest start
  ('AppPoolState'),    -- whether a pool runs
  ('AppPoolCommand'),  -- writing it starts or stops a pool
  ('FilterState'),     -- whether a filter is loaded
  ('MD_APP_LAST_OUTPROC_PID'),    -- number of a process
  ('MD_ETAG_CHANGENUMBER'),       -- counts changes of this server
  ('ChangeNumber'),               -- counts changes of this metabase
  ('HistoryMajorVersionNumber'),  -- counts versions of this metabase
  ('BINSchemaTimeStamp'),         -- when this machine's schema was compiled
  ('XMLSchemaTimeStamp'),         -- when this machine's schema was written

-- Bound to the machine: without meaning, or with a wrong one, on any other.
  ('AdminACL'),            -- rights of accounts by the source's own identifiers
  ('AdminACLBin'),         -- the same rights as bytes
  ('SSLCertHash'),         -- a certificate in the source's store; the target hasn't got its key
  ('SSLStoreName'),        -- that store
  ('SslCtlIdentifier'),    -- a list of trusted certificates in the source's store
  ('SslCtlStoreName'),     -- that list's store
  ('ServerID'),            -- names the site within the source
  ('ClusterEnabled'),      -- whether the source's cluster runs the site
  ('DownlevelAdminInstance'),  -- number of the one site that old tools see; numbers change on the way
  ('AdminServer'),             -- number of the administration site
  ('SessionKey'),              -- the key that this machine's secrets are locked with
  ('MajorIIsVersionNumber'),   -- what the machine is
  ('MinorIIsVersionNumber'),
  ('MD_SERVER_CAPABILITIES'),
  ('MD_SERVER_PLATFORM'),

-- Passwords. They are stored encrypted with the source's key and would be of no use, or lie open in a database.
-- They have to be typed in on the target; the user names beside them travel.
  ('AnonymousUserPass'),
  ('UNCPassword'),
  ('LogOdbcPassword'),
  ('WAMUserPass'),
  ('ADConnectionsPassword');
