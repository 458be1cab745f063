CREATE TABLE "Connections" ("Id" BIGINT, "Login" TEXT, "Description" TEXT, "Admin" BOOLEAN);
INSERT INTO "Connections" VALUES (1, 'root', 'Über alles', TRUE), (2, 'guest', '', FALSE), (3, NULL, NULL, NULL),
    (4294967295, 'last', 'x', TRUE);
CREATE TABLE "Commands" ("Id_object" BIGINT, "Name" TEXT, "Description" TEXT);
INSERT INTO "Commands" VALUES (1, 'start', 'Starts'), (1, 'стоп', 'Stops'), (2, 'stop', 'Brakes'), (3, 'stop', NULL),
    (4294967295, 'stop', 'Far');
