CREATE TABLE "Connections" ("Id" integer);
