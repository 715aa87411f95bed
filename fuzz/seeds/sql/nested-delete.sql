DELETE Stats.* FROM Driver INNER JOIN (Stats INNER JOIN Race ON Stats.RaceID=Race.RaceID) ON Driver.DriverID=Stats.DriverID WHERE Driver.Exclude=No
